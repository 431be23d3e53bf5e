#pragma once
// The fixture of the studio's tests: a real main window (message boxes recorded instead
// of shown, unsaved changes discarded unless a test says otherwise), helpers to wait for
// its background work and to build fault sets in memory.
#include <memory>

#include <QMessageBox>
#include <QStandardItem>
#include <QStringList>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <core/multiarray.h>
#include <faultpalette.h>
#include <znfaultpatchmanager.h>
#include <znmessagelog.h>
#include <znnotificationarea.h>
#include <znobjecttree.h>

#include <testservices.h>

#include "faultsetdocument.h"
#include "studioproject.h"
#include "studiotree.h"
#include "studiowindow.h"

class StudioTest : public testing::Test {
protected:
    void SetUp() override
    {
        window = std::make_unique<StudioWindow>(StudioWindow::Options{false});
        window->setUnsavedChangesQuestion([](FaultSetDocument*) { return QMessageBox::Discard; });
        window->show();
    }
    void TearDown() override { window.reset(); }

    // Waits until no background task runs; false after `ms` milliseconds.
    bool waitForTasks(int ms = 120000)
    {
        return QTest::qWaitFor([this] { return window->runningTaskCount() == 0; }, ms);
    }

    // A fault set of one fault per entry of `names`, each of two vertical sticks 20 apart
    // at x = 100 * its index, in the palette's colour of its index, added to the project as
    // a document.
    FaultSetDocument* addFaultSet(const QStringList& names, const QString& documentName = QStringLiteral("Picks"))
    {
        core::MultiArray<core::vec3> rows(names.size());
        for (int f = 0; f < names.size(); ++f)
            for (int stick = 0; stick < 2; ++stick) {
                for (int k = 0; k < 3; ++k)
                    rows.addElement(f, core::vec3(100.0 * f + 20.0 * stick, 50.0 * k, 10.0 * stick), false);
                if (stick == 0) rows.addElement(f, core::vec3(-9999.0, -9999.0, -9999.0), false);
            }
        auto set = std::make_unique<ZNFaultPatchManager>(rows, georef::UnitObject());
        for (int f = 0; f < names.size(); ++f) {
            ZN3DFaultPatchLight* light = set->findFaultLight(f + 1);
            light->SetFaultName(names[f]);
            // The palette's colours, not random ones: pictures tell the faults apart by hue.
            QPen pen = light->getPen();
            pen.setColor(fault::faultColour(f));
            light->setPen(pen);
        }
        auto document = std::make_unique<FaultSetDocument>(
            std::move(set), std::map<int, std::unique_ptr<ZN3DFaultPatch>>(), QString(), documentName);
        return window->project()->addFaultSet(std::move(document));
    }

    // The names the tree lists under a fault set, in order.
    QStringList treeNames(const FaultSetDocument* document) const
    {
        QStringList names;
        const QStandardItem* setItem = window->studioTree()->faultSetItem(document);
        for (int row = 0; setItem && row < setItem->rowCount(); ++row) names << setItem->child(row)->text();
        return names;
    }

    // The texts of the log's messages of `kind`.
    QStringList logTexts(int kind) const
    {
        QStringList texts;
        for (const ZNMessageLog::Entry& e : window->messageLog()->entries())
            if (e.kind == kind) texts << e.text;
        return texts;
    }

    RecordingMessageBox boxes;  // installed before the window, restored after it
    std::unique_ptr<StudioWindow> window;
    QTemporaryDir dir;
};
