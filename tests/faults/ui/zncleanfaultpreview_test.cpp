// The fault cleaning dialog, driven as the host drives it: its widget tree, texts and
// looks as they must be, its rows, and exactly one action per gesture.
#include <gtest/gtest.h>

#include <QApplication>
#include <QHBoxLayout>
#include <QListWidget>
#include <QPushButton>
#include <QSpacerItem>
#include <QTest>
#include <QTranslator>
#include <QVBoxLayout>

#include <zn3dviewer.h>
#include <zncleanfaultpreview.h>

#include "testservices.h"

namespace {

QStringList rowsOf(const ZNCleanFaultPreview& dialog)
{
    QStringList rows;
    const auto* list = dialog.findChild<QListWidget*>(QStringLiteral("listView"));
    for (int r = 0; r < list->count(); ++r) rows << list->item(r)->text();
    return rows;
}

void fill(ZNCleanFaultPreview& dialog, const QList<core::Duplet>& pairs)
{
    dialog.getDupletArray().clear();
    dialog.getParallelArray().clear();
    for (const core::Duplet& pair : pairs) {
        dialog.getDupletArray().add(pair);
        dialog.getParallelArray().add(pair.a * 10.0 + pair.b);  // tells the rows apart
    }
    dialog.updateDupletArray();
}

QPushButton* button(const ZNCleanFaultPreview& dialog, const char* name)
{
    return dialog.findChild<QPushButton*>(QLatin1String(name));
}

// Prefixes every text with its context, so that a test sees which context it came from.
class ContextTranslator : public QTranslator {
public:
    QString translate(const char* context, const char* text, const char*, int) const override
    {
        return QLatin1String(context) + QLatin1Char(':') + QLatin1String(text);
    }
    bool isEmpty() const override { return false; }
};

} // namespace

TEST(CleanFaultPreview, BuildsItsWidgetTreeInOrderWithItsNamesSizesAndIcons)
{
    ZNCleanFaultPreview dialog;
    EXPECT_EQ(dialog.objectName(), "ZNCleanFaultPreview");
    EXPECT_EQ(dialog.size(), QSize(1000, 500));
    EXPECT_FALSE(dialog.windowIcon().isNull());

    auto* mainVbox = qobject_cast<QVBoxLayout*>(dialog.layout());
    ASSERT_NE(mainVbox, nullptr);
    EXPECT_EQ(mainVbox->objectName(), "mainVbox");
    ASSERT_EQ(mainVbox->count(), 2);
    auto* top = qobject_cast<QHBoxLayout*>(mainVbox->itemAt(0)->layout());
    auto* bottom = qobject_cast<QHBoxLayout*>(mainVbox->itemAt(1)->layout());
    ASSERT_TRUE(top && bottom);

    ASSERT_EQ(top->count(), 3);
    auto* list = qobject_cast<QListWidget*>(top->itemAt(0)->widget());
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->objectName(), "listView");
    EXPECT_EQ(list->maximumWidth(), 130);
    EXPECT_EQ(top->itemAt(1)->widget(), dialog.getLeft3dViewer());
    EXPECT_EQ(top->itemAt(2)->widget(), dialog.getRight3dViewer());
    EXPECT_NE(dialog.getLeft3dViewer(), dialog.getRight3dViewer());
    EXPECT_EQ(top->stretch(0), 0);
    EXPECT_EQ(top->stretch(1), 1);
    EXPECT_EQ(top->stretch(2), 1);

    const char* const order[] = {"acceptButton", "refuseButton", "previewButton", "undoButton", "redoButton"};
    ASSERT_EQ(bottom->count(), 7);
    for (int k = 0; k < 5; ++k) {
        auto* b = qobject_cast<QPushButton*>(bottom->itemAt(k)->widget());
        ASSERT_NE(b, nullptr) << k;
        EXPECT_EQ(b->objectName(), order[k]);
    }
    QSpacerItem* spacer = bottom->itemAt(5)->spacerItem();
    ASSERT_NE(spacer, nullptr);
    EXPECT_EQ(spacer->sizeHint(), QSize(15, 20));
    EXPECT_EQ(spacer->sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
    EXPECT_EQ(spacer->sizePolicy().verticalPolicy(), QSizePolicy::Minimum);
    EXPECT_EQ(bottom->itemAt(6)->widget(), button(dialog, "closeButton"));

    for (const char* name : {"undoButton", "redoButton"}) {
        EXPECT_TRUE(button(dialog, name)->text().isEmpty()) << name;
        EXPECT_FALSE(button(dialog, name)->icon().isNull()) << name;
    }
}

TEST(CleanFaultPreview, SaysWhatEachButtonDoesInItsOwnTranslationContext)
{
    ZNCleanFaultPreview dialog;
    EXPECT_EQ(dialog.windowTitle(), "Fault Cleaning");
    EXPECT_EQ(button(dialog, "acceptButton")->text(), "Merge");
    EXPECT_EQ(button(dialog, "refuseButton")->text(), "Skip");
    EXPECT_EQ(button(dialog, "previewButton")->text(), "PREVIEW");
    EXPECT_EQ(button(dialog, "closeButton")->text(), "Close");

    ContextTranslator translator;
    QCoreApplication::installTranslator(&translator);
    dialog.retranslateUi();
    QCoreApplication::removeTranslator(&translator);
    EXPECT_EQ(dialog.windowTitle(), "ZNCleanFaultPreview:Fault Cleaning");
    EXPECT_EQ(button(dialog, "acceptButton")->text(), "ZNCleanFaultPreview:Merge");
    EXPECT_EQ(button(dialog, "refuseButton")->text(), "ZNCleanFaultPreview:Skip");
    EXPECT_EQ(button(dialog, "closeButton")->text(), "ZNCleanFaultPreview:Close");
}

TEST(CleanFaultPreview, StylesMergeSkipAndPreviewCharacterForCharacter)
{
    const QString hover = "QPushButton:hover {background: qradialgradient(cx: 0.3, cy: -0.4,fx: 0.3, fy: -0.4,"
                          "radius: 1.35, stop: 0 #fff, stop: 1 #bbb);} ";
    const QString pressed = "QPushButton:pressed {background: qradialgradient(cx: 0.4, cy: -0.1,fx: 0.4, "
                            "fy: -0.1,radius: 1.35, stop: 0 #fff, stop: 1 #ddd);}";
    const QString black = "QPushButton {color: black;border: 2px solid #555;border-radius: 11px;padding: 5px;"
                          "background: qradialgradient(cx: 0.3, cy: -0.4,fx: 0.3, fy: -0.4,radius: 1.35, "
                          "stop: 0 #fff, stop: 1 #888);min-width: 80px;} ";
    QString red = black;
    red.replace("color: black", "color: red");
    ZNCleanFaultPreview dialog;
    EXPECT_EQ(button(dialog, "acceptButton")->styleSheet(), black + hover + pressed);
    EXPECT_EQ(button(dialog, "refuseButton")->styleSheet(), black + hover + pressed);
    EXPECT_EQ(button(dialog, "previewButton")->styleSheet(), red + hover + pressed);
    for (const char* name : {"undoButton", "redoButton", "closeButton"})
        EXPECT_TRUE(button(dialog, name)->styleSheet().isEmpty()) << name;
}

TEST(CleanFaultPreview, AnEmptyArrayListsNothingAndHasNoCurrentPair)
{
    RecordingProcess process;
    ZNCleanFaultPreview dialog;
    fill(dialog, {});
    dialog.selectFirstItem();
    dialog.selectNextItem();
    EXPECT_TRUE(rowsOf(dialog).isEmpty());
    EXPECT_EQ(dialog.getCurrentIntItem(), -1);
    EXPECT_EQ(dialog.getCurrentItem(), core::Duplet(-9999, -9999));
    dialog.removeItem(0);
    EXPECT_EQ(dialog.getDupletArray().size(), 0);
    EXPECT_TRUE(process.actions.isEmpty());
}

TEST(CleanFaultPreview, ListsSignedPairsAndReturnsThemPositive)
{
    ZNCleanFaultPreview dialog;
    fill(dialog, {{-3, 7}, {12, -40}, {5, 6}});
    EXPECT_EQ(rowsOf(dialog), QStringList({"-3 <-> 7", "12 <-> -40", "5 <-> 6"}));
    dialog.selectFirstItem();
    EXPECT_EQ(dialog.getCurrentIntItem(), 0);
    EXPECT_EQ(dialog.getCurrentItem(), core::Duplet(3, 7));
    dialog.selectNextItem();
    EXPECT_EQ(dialog.getCurrentItem(), core::Duplet(12, 40));
    EXPECT_EQ(dialog.getDupletArray()[1], core::Duplet(12, -40));  // stored as given
}

TEST(CleanFaultPreview, RemovingARowMovesTheLastPairIntoItsPlaceInBothArrays)
{
    struct Case {
        int row;
        QStringList rows;
        QList<double> parallel;
    };
    const Case cases[] = {
        {0, {"2 <-> 20", "1 <-> 10"}, {40, 20}},             // (p0, p1, p2) -> (p2, p1)
        {1, {"0 <-> 0", "2 <-> 20"}, {0, 40}},
        {2, {"0 <-> 0", "1 <-> 10"}, {0, 20}},               // the last row simply goes
        {-1, {"0 <-> 0", "1 <-> 10", "2 <-> 20"}, {0, 20, 40}},  // nothing removed
        {3, {"0 <-> 0", "1 <-> 10", "2 <-> 20"}, {0, 20, 40}},
    };
    for (const Case& c : cases) {
        ZNCleanFaultPreview dialog;
        fill(dialog, {{0, 0}, {1, 10}, {2, 20}});
        dialog.removeItem(c.row);
        EXPECT_EQ(rowsOf(dialog), c.rows) << c.row;
        QList<double> parallel;
        for (double v : dialog.getParallelArray()) parallel << v;
        EXPECT_EQ(parallel, c.parallel) << c.row;
    }
}

TEST(CleanFaultPreview, ANegativeRowStillRefreshesTheListFromTheArray)
{
    ZNCleanFaultPreview dialog;
    fill(dialog, {{1, 2}});
    dialog.getDupletArray().add(core::Duplet(3, 4));  // filled directly, not yet shown
    EXPECT_EQ(rowsOf(dialog).size(), 1);
    dialog.removeItem(-1);
    EXPECT_EQ(rowsOf(dialog), QStringList({"1 <-> 2", "3 <-> 4"}));
}

TEST(CleanFaultPreview, SelectionStopsAtTheLastRowAndPairsBeyondTheArrayAreNone)
{
    ZNCleanFaultPreview dialog;
    fill(dialog, {{1, 2}, {3, 4}});
    dialog.selectNextItem();  // no current row: the first one
    EXPECT_EQ(dialog.getCurrentIntItem(), 0);
    dialog.selectNextItem();
    EXPECT_EQ(dialog.getCurrentIntItem(), 1);
    dialog.selectNextItem();
    EXPECT_EQ(dialog.getCurrentIntItem(), 1);
    EXPECT_EQ(dialog.getCurrentItem(), core::Duplet(3, 4));
    EXPECT_EQ(dialog.findChild<QListWidget*>()->selectedItems().size(), 1);

    dialog.selectItem(7);  // no such row
    EXPECT_EQ(dialog.getCurrentIntItem(), 1);
    dialog.getDupletArray().resize(1);  // the host shrank the array without a refresh
    EXPECT_EQ(dialog.getCurrentItem(), core::Duplet(-9999, -9999));
}

TEST(CleanFaultPreview, SetsAPixmapAsTheIconOfAnExistingRowOnly)
{
    ZNCleanFaultPreview dialog;
    fill(dialog, {{1, 2}});
    QPixmap picture(16, 16);
    picture.fill(Qt::red);
    dialog.setPixmap(0, picture);
    dialog.setPixmap(1, picture);
    dialog.setPixmap(-1, picture);
    const QIcon icon = dialog.findChild<QListWidget*>()->item(0)->icon();
    ASSERT_FALSE(icon.isNull());
    EXPECT_EQ(icon.pixmap(16, 16).toImage().pixelColor(8, 8), QColor(Qt::red));
}

TEST(CleanFaultPreview, EachGestureSendsExactlyItsAction)
{
    RecordingProcess process;
    ZNCleanFaultPreview dialog;
    fill(dialog, {{1, 2}, {3, 4}});

    const std::pair<const char*, const char*> clicks[] = {
        {"acceptButton", "ACCEPT_CLEAN_FAULT_PREVIEW"}, {"refuseButton", "REFUSE_CLEAN_FAULT_PREVIEW"},
        {"previewButton", "PREVIEW_CLEAN_FAULT_PREVIEW"}, {"undoButton", "UNDO_CLEAN_FAULT_PREVIEW"},
        {"redoButton", "REDO_CLEAN_FAULT_PREVIEW"},       {"closeButton", "CLOSE_CLEAN_FAULT_PREVIEW"},
    };
    for (const auto& click : clicks) {
        process.actions.clear();
        QTest::mouseClick(button(dialog, click.first), Qt::LeftButton);
        EXPECT_EQ(process.actionNames(), QStringList(click.second)) << click.first;
        EXPECT_EQ(process.actions.value(0).second, nullptr);
    }
    EXPECT_FALSE(process.actionNames().contains("UPDATE_WINDOW_MANAGER"));  // Close asks the host; the host closes

    process.actions.clear();
    auto* list = dialog.findChild<QListWidget*>();
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->item(1)).center());
    EXPECT_EQ(process.actionNames(), QStringList("DISPLAY_CLEAN_FAULT_PREVIEW_SELECTED_ITEM"));
    EXPECT_EQ(dialog.getCurrentIntItem(), 1);
    process.actions.clear();
    dialog.selectFirstItem();
    EXPECT_EQ(process.actionNames(), QStringList("DISPLAY_CLEAN_FAULT_PREVIEW_SELECTED_ITEM"));
}

TEST(CleanFaultPreview, ClosingTheWindowClosesItsParentThenSaysSoAndDestructionUpdatesTheWindows)
{
    RecordingProcess process;
    QWidget frame;
    auto* dialog = new ZNCleanFaultPreview(&frame);
    frame.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&frame));
    bool parentClosedFirst = false;
    process.addActionListener([&](const QString& action, ZNObject*) {
        if (action == "CLOSE_CLEAN_FAULT_PREVIEW") parentClosedFirst = !frame.isVisible();
    });
    process.actions.clear();
    EXPECT_TRUE(dialog->close());
    EXPECT_FALSE(frame.isVisible());
    EXPECT_TRUE(parentClosedFirst);
    EXPECT_EQ(process.actionNames(), QStringList("CLOSE_CLEAN_FAULT_PREVIEW"));

    process.actions.clear();
    delete dialog;
    EXPECT_EQ(process.actionNames(), QStringList("UPDATE_WINDOW_MANAGER"));

    ZNCleanFaultPreview alone;  // a window without parent closes itself only
    alone.show();
    process.actions.clear();
    alone.close();
    EXPECT_EQ(process.actionNames(), QStringList("CLOSE_CLEAN_FAULT_PREVIEW"));
}
