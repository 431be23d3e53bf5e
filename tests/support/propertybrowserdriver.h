#pragma once
// Drives a property browser as a user does, with mouse and key events: clicks on value
// cells, editors opened, typed into and committed, enumeration entries picked in the
// combo box's popup. Header-only: only the widget test executables include it.
#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QTest>

#include <gtest/gtest.h>

#include <znpropertybrowser.h>

struct PropertyBrowserDriver {
    ZNPropertyBrowser& browser;

    QRect cell(const QString& id, int column = ZNPropertyModel::ValueColumn) const
    {
        return browser.visualRect(browser.indexOf(id, column));
    }
    void click(const QString& id) const
    {
        QTest::mouseClick(browser.viewport(), Qt::LeftButton, {}, cell(id).center());
    }
    // The editor a click on the value of `id` opened; null when none opened. The click
    // makes the cell current (a click on the current cell opens its editor only after the
    // double-click interval).
    QWidget* openEditor(const QString& id) const
    {
        browser.setCurrentIndex(QModelIndex());
        click(id);
        return browser.indexWidget(browser.indexOf(id));
    }
    // Enter in the editor; the commit is queued.
    static void commit(QWidget* editor)
    {
        QTest::keyClick(editor, Qt::Key_Return);
        QCoreApplication::processEvents();
    }
    // Replaces the editor's text of `id` with `text`, then Enter.
    void typeAndCommit(const QString& id, const QString& text) const
    {
        QWidget* editor = openEditor(id);
        ASSERT_NE(editor, nullptr) << id.toStdString();
        QTest::keyClick(editor, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClicks(editor, text);
        commit(editor);
    }
    // Opens the enumeration editor of `id` and clicks the entry `row` in its popup.
    void pickFromPopup(const QString& id, int row) const
    {
        auto* combo = qobject_cast<QComboBox*>(openEditor(id));
        ASSERT_NE(combo, nullptr) << id.toStdString();
        combo->showPopup();
        QAbstractItemView* list = combo->view();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(list->window()));
        QTest::qWait(QApplication::doubleClickInterval() + 50);  // a popup ignores an early release
        const QPoint at = list->visualRect(list->model()->index(row, 0)).center();
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, at);
        QCoreApplication::processEvents();
    }
};
