// The property browser showing the 3D fault patch's sheet, with the host's loop: an
// edit goes to the patch's updateProperty, the sheet is read again and shown.
#include <QScrollBar>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>

#include <gtest/gtest.h>

#include <pictures.h>
#include <property/znpropertysheet.h>
#include <propertybrowserdriver.h>
#include <testservices.h>
#include <zn3dfaultpatch.h>
#include <znpropertybrowser.h>

namespace {

ZNPropertySheet sheetOf(const ZN3DFaultPatch& patch)
{
    ZNPropertySheet sheet;
    patch.createProperty(sheet);
    patch.createGlobalProperty(sheet);
    return sheet;
}

// Pixels of `image` in `area` darker than `lightness` (0..255).
int pixelsDarkerThan(const QImage& image, const QRect& area, int lightness)
{
    return picturetest::countPixels(image, area, [lightness](QColor c) { return c.lightness() < lightness; });
}

class FaultPatchSheet : public testing::Test {
protected:
    void SetUp() override
    {
        patch.SetFaultName(QStringLiteral("Fault 7"));
        browser.resize(380, 720);
        browser.setSheet(sheetOf(patch));
        browser.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&browser));
        // The host's loop: apply the edit, read the sheet again.
        QObject::connect(&browser, &ZNPropertyBrowser::propertyEdited, &browser,
                         [this](const QString& id, const QVariant& value) {
                             patch.updateProperty(id, value);
                             browser.setSheet(sheetOf(patch));
                         });
    }

    RecordingProcess process;
    ZN3DFaultPatch patch;
    ZNPropertyBrowser browser;
    PropertyBrowserDriver drive{browser};
};

} // namespace

TEST_F(FaultPatchSheet, ShowsEveryGroupAndRowWithItsEditor)
{
    ZNPropertyModel* model = browser.propertyModel();
    QStringList groups;
    for (int row = 0; row < model->rowCount(); ++row) groups << model->index(row, 0).data().toString();
    EXPECT_EQ(groups, (QStringList{"Information", "Edge", "Fill", "Gridding"}));
    EXPECT_EQ(browser.sheet().count(), sheetOf(patch).count());

    const QModelIndex method = browser.indexOf(QStringLiteral("Gridding Method"));
    EXPECT_EQ(method.data().toString(), QStringLiteral("Minimum Envelop"));
    auto* combo = qobject_cast<QComboBox*>(drive.openEditor(QStringLiteral("Gridding Method")));
    ASSERT_NE(combo, nullptr);
    EXPECT_EQ(combo->count(), 2);
    EXPECT_EQ(combo->itemText(0), QStringLiteral("Convex Envelop"));
    EXPECT_EQ(combo->itemText(1), QStringLiteral("Minimum Envelop"));

    auto* transparency = qobject_cast<QSpinBox*>(drive.openEditor(QStringLiteral("Transparency")));
    ASSERT_NE(transparency, nullptr);
    EXPECT_EQ(transparency->minimum(), 0);
    EXPECT_EQ(transparency->maximum(), 100);
    EXPECT_EQ(transparency->singleStep(), 10);
    EXPECT_EQ(transparency->value(), 50);
    QTest::keyClick(&browser, Qt::Key_Escape);

    EXPECT_EQ(browser.indexOf(QStringLiteral("Name")).data().toString(), QStringLiteral("Fault 7"));
    EXPECT_TRUE(browser.indexOf(QStringLiteral("Name")).flags() & Qt::ItemIsEditable);
    EXPECT_FALSE(browser.indexOf(QStringLiteral("Dip")).flags() & Qt::ItemIsEditable);
    EXPECT_EQ(browser.indexOf(QStringLiteral("ShowPickingIntersection"), 0).data(Qt::ToolTipRole),
              QStringLiteral("ShowPickingIntersection"));
    EXPECT_FALSE(browser.indexOf(QStringLiteral("Style Edge")).data(Qt::DecorationRole).value<QIcon>().isNull())
        << "the pen style's icon";
}

// Choosing the convex envelop disables "Interp Size" and "Extrapolation" in place, posts
// the mesh update once; a commit of the same transparency posts nothing, a step posts
// the light update once.
TEST_F(FaultPatchSheet, EditsGoThroughThePatchAndPostOneActionPerChange)
{
    const int scroll = browser.verticalScrollBar()->value();
    drive.pickFromPopup(QStringLiteral("Gridding Method"), 0);
    EXPECT_EQ(process.actionNames(), QStringList{"UPDATE_FAULT_MESH"});
    EXPECT_EQ(patch.getMeshingMethod(), 0);
    for (const char* id : {"Interp Size", "Extrapolation"})
        EXPECT_FALSE(browser.indexOf(QLatin1String(id)).flags() & Qt::ItemIsEnabled) << id;
    EXPECT_TRUE(browser.indexOf(QStringLiteral("Smooth Factor")).flags() & Qt::ItemIsEnabled);
    EXPECT_EQ(browser.verticalScrollBar()->value(), scroll);

    process.actions.clear();
    drive.commit(drive.openEditor(QStringLiteral("Transparency")));
    EXPECT_TRUE(process.actions.isEmpty());
    QWidget* spin = drive.openEditor(QStringLiteral("Transparency"));
    ASSERT_NE(spin, nullptr);
    QTest::keyClick(spin, Qt::Key_Up);
    drive.commit(spin);
    EXPECT_EQ(process.actionNames(), QStringList{"UPDATE_FAULT_LIGHT"});
    EXPECT_NEAR(patch.getStoredOpacity(), 0.4, 1e-6);
    EXPECT_EQ(browser.indexOf(QStringLiteral("Transparency")).data().toString(), QStringLiteral("60"));
}

// The browser paints: labels in dark text in the label column, greyed for the disabled
// rows, the background below the last row. KORVALITH_KEEP_PICTURES keeps the picture.
TEST_F(FaultPatchSheet, ThePictureShowsTheLabelsAndGreysDisabledRows)
{
    patch.setMeshingMethod(0);  // "Interp Size" and "Extrapolation" disabled
    browser.setSheet(sheetOf(patch));
    QCoreApplication::processEvents();
    const QImage picture = browser.grab().toImage();
    picturetest::keepPicture(picture, QStringLiteral("property_browser_fault_patch"));

    const QPoint offset = browser.viewport()->mapTo(&browser, QPoint(0, 0));
    auto label = [&](const char* id) {
        return drive.cell(QLatin1String(id), ZNPropertyModel::LabelColumn).translated(offset);
    };
    const int kDarkText = 100;  // lightness of text pixels in the default palette
    for (const char* id : {"Name", "Gridding Method", "Smooth Factor", "Transparency"})
        EXPECT_GT(pixelsDarkerThan(picture, label(id), kDarkText), 20) << id;
    for (const char* id : {"Interp Size", "Extrapolation"})
        EXPECT_EQ(pixelsDarkerThan(picture, label(id), kDarkText), 0) << id << " greyed";
    EXPECT_GT(pixelsDarkerThan(picture, drive.cell(QStringLiteral("Name")).translated(offset), kDarkText), 20)
        << "the value \"Fault 7\"";

    const QRect last = drive.cell(QStringLiteral("Transparency")).translated(offset);
    const QRect below(4, last.bottom() + 4, picture.width() - 8, picture.height() - last.bottom() - 8);  // inside the frame
    ASSERT_GT(below.height(), 20) << "the browser is tall enough for every row";
    const QColor base = picture.pixelColor(below.center());
    EXPECT_EQ(pixelsDarkerThan(picture, below, base.lightness()), 0) << "plain background";
}
