// The property browser: editing every kind with the real editors, reporting only real
// changes, ranges, enumerations, read-only and disabled rows, the host's updates.
#include <functional>

#include <QAbstractItemView>
#include <QApplication>
#include <QColorDialog>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <znpropertybrowser.h>
#include <znpropertydelegate.h>

#include <propertybrowserdriver.h>

namespace {

const QStringList kMethodNames = {QStringLiteral("Convex"), QStringLiteral("Minimum"), QStringLiteral("Other")};
const QColor kMethodColours[] = {Qt::red, Qt::green, Qt::blue};

QImage filled(const QColor& colour)
{
    QImage image(16, 16, QImage::Format_ARGB32);
    image.fill(colour);
    return image;
}

// One editable row of each kind, and rows that cannot be edited.
ZNPropertySheet sampleSheet()
{
    ZNPropertySheet sheet;
    const QString values = QStringLiteral("Values");
    sheet.addProperty(values, QStringLiteral("Name"), QStringLiteral("Name"), ZNProperty::String,
                      QStringLiteral("alpha"));
    sheet.addProperty(values, QStringLiteral("Count"), QStringLiteral("Count"), ZNProperty::Int, 5).setRange(1, 10, 1);
    ZNProperty& scale = sheet.addProperty(values, QStringLiteral("Scale"), QStringLiteral("Scale"),
                                          ZNProperty::Double, 0.5);
    scale.setAttribute(ZNProperty::minimum(), 0.0);
    scale.setAttribute(ZNProperty::maximum(), 2.0);
    scale.setAttribute(ZNProperty::singleStep(), 0.25);
    sheet.addProperty(values, QStringLiteral("Visible"), QStringLiteral("Visible"), ZNProperty::Bool, true);
    ZNProperty& method = sheet.addProperty(values, QStringLiteral("Method"), QStringLiteral("Method"),
                                           ZNProperty::Enum, 1);
    method.setAttribute(ZNProperty::enumNames(), kMethodNames);
    method.setAttribute(ZNProperty::enumIcons(),
                        QVariantList{filled(kMethodColours[0]), filled(kMethodColours[1]), filled(kMethodColours[2])});
    sheet.addProperty(values, QStringLiteral("Colour"), QStringLiteral("Colour"), ZNProperty::Color,
                      QColor(200, 40, 40));

    const QString locked = QStringLiteral("Locked");
    sheet.addProperty(locked, QStringLiteral("Nb Facette"), QStringLiteral("Nb Facet"), ZNProperty::String,
                      QStringLiteral("12")).readOnly = true;
    sheet.addProperty(locked, QStringLiteral("Saved"), QStringLiteral("Saved"), ZNProperty::Bool, true).readOnly = true;
    sheet.addProperty(locked, QStringLiteral("Tint"), QStringLiteral("Tint"), ZNProperty::Color, QColor(Qt::gray))
        .readOnly = true;
    sheet.addProperty(locked, QStringLiteral("Interp Size"), QStringLiteral("Interp Size"), ZNProperty::Int, 30)
        .enabled = false;
    sheet.addProperty(locked, QStringLiteral("Show"), QStringLiteral("Show"), ZNProperty::Bool, false).enabled = false;
    ZNProperty& off = sheet.addProperty(locked, QStringLiteral("Style"), QStringLiteral("Style"), ZNProperty::Enum, 0);
    off.setAttribute(ZNProperty::enumNames(), kMethodNames);
    off.enabled = false;
    return sheet;
}

// Answers the next colour dialog with `colour` (or cancels it when `colour` is invalid);
// counts the dialogs it saw in `seen`.
void answerColorDialog(const QColor& colour, int* seen = nullptr)
{
    QTimer::singleShot(0, [colour, seen] {
        auto* dialog = qobject_cast<QColorDialog*>(QApplication::activeModalWidget());
        if (!dialog) return;
        if (seen) ++*seen;
        if (!colour.isValid()) return dialog->reject();
        dialog->setCurrentColor(colour);
        dialog->accept();
    });
}

class PropertyBrowser : public testing::Test {
public:  // the edit cases' steps call the helpers
    void SetUp() override
    {
        browser.resize(420, 480);
        browser.setSheet(sampleSheet());
        browser.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&browser));
    }

    void click(const QString& id) { drive.click(id); }
    QWidget* openEditor(const QString& id) { return drive.openEditor(id); }
    void commit(QWidget* editor) { drive.commit(editor); }
    void typeAndCommit(const QString& id, const QString& text) { drive.typeAndCommit(id, text); }
    void pickFromPopup(const QString& id, int row) { drive.pickFromPopup(id, row); }
    QVariant valueOf(const QString& id) const { return browser.sheet().property(id)->value; }

    ZNPropertyBrowser browser;
    PropertyBrowserDriver drive{browser};
    QSignalSpy edited{&browser, &ZNPropertyBrowser::propertyEdited};
};

struct EditCase {
    const char* id;
    std::function<void(PropertyBrowser&)> edit;
    QVariant expected;
};

} // namespace

// Each kind's real editor reports one change with the kind's type.
TEST_F(PropertyBrowser, EachKindReportsOneEditWithItsType)
{
    const EditCase cases[] = {
        {"Name", [](PropertyBrowser& t) { t.typeAndCommit(QStringLiteral("Name"), QStringLiteral("beta")); },
         QStringLiteral("beta")},
        {"Count", [](PropertyBrowser& t) { t.typeAndCommit(QStringLiteral("Count"), QStringLiteral("7")); }, 7},
        {"Scale", [](PropertyBrowser& t) { t.typeAndCommit(QStringLiteral("Scale"), QStringLiteral("1.25")); },
         1.25},
        {"Visible", [](PropertyBrowser& t) { t.click(QStringLiteral("Visible")); }, false},
        {"Method", [](PropertyBrowser& t) { t.pickFromPopup(QStringLiteral("Method"), 2); }, 2},
        {"Colour",
         [](PropertyBrowser& t) {
             answerColorDialog(QColor(10, 200, 30));
             t.click(QStringLiteral("Colour"));
         },
         QColor(10, 200, 30)},
    };
    for (const EditCase& c : cases) {
        SCOPED_TRACE(c.id);
        const QString id = QString::fromLatin1(c.id);
        edited.clear();
        c.edit(*this);
        ASSERT_EQ(edited.count(), 1);
        EXPECT_EQ(edited[0][0].toString(), id);
        EXPECT_EQ(edited[0][1], c.expected);
        EXPECT_EQ(edited[0][1].userType(), c.expected.userType());
        EXPECT_EQ(valueOf(id), c.expected) << "what sheet() hands back";
    }
    EXPECT_EQ(browser.indexOf(QStringLiteral("Method")).data().toString(), QStringLiteral("Other"));
    EXPECT_EQ(browser.indexOf(QStringLiteral("Colour")).data().toString(), QStringLiteral("#0ac81e"));
    EXPECT_EQ(browser.indexOf(QStringLiteral("Visible")).data(Qt::CheckStateRole), Qt::Unchecked);
}

// Committing what was shown reports nothing, whatever the editor.
TEST_F(PropertyBrowser, CommitsOfTheSameValueReportNothing)
{
    ZNPropertySheet sheet = sampleSheet();
    sheet.setValue(QStringLiteral("Scale"), 0.123456789);  // more digits than the editor shows
    browser.setSheet(sheet);
    ZNPropertyModel* model = browser.propertyModel();
    const EditCase cases[] = {
        {"Name", [](PropertyBrowser& t) { t.commit(t.openEditor(QStringLiteral("Name"))); }, {}},
        {"Count", [](PropertyBrowser& t) { t.commit(t.openEditor(QStringLiteral("Count"))); }, {}},
        {"Scale", [](PropertyBrowser& t) { t.commit(t.openEditor(QStringLiteral("Scale"))); }, {}},
        {"Method", [](PropertyBrowser& t) { t.commit(t.openEditor(QStringLiteral("Method"))); }, {}},
        {"Method", [](PropertyBrowser& t) { t.pickFromPopup(QStringLiteral("Method"), 1); }, {}},
        {"Colour",
         [](PropertyBrowser& t) {
             answerColorDialog(QColor(200, 40, 40));
             t.click(QStringLiteral("Colour"));
         },
         {}},
        {"Colour",
         [](PropertyBrowser& t) {
             answerColorDialog(QColor());  // cancelled
             t.click(QStringLiteral("Colour"));
         },
         {}},
        {"Count", [model](PropertyBrowser&) { model->setData(model->indexOf(QStringLiteral("Count")), "5"); }, {}},
        {"Visible",
         [model](PropertyBrowser&) {
             model->setData(model->indexOf(QStringLiteral("Visible")), Qt::Checked, Qt::CheckStateRole);
         },
         {}},
        {"Colour",
         [model](PropertyBrowser&) { model->setData(model->indexOf(QStringLiteral("Colour")), "#c82828"); }, {}},
    };
    const ZNPropertySheet before = browser.sheet();
    for (const EditCase& c : cases) {
        SCOPED_TRACE(c.id);
        c.edit(*this);
        EXPECT_EQ(edited.count(), 0);
        const QString id = QString::fromLatin1(c.id);
        EXPECT_EQ(valueOf(id), before.property(id)->value);
    }
}

// Spin boxes and the model keep numbers within "minimum" and "maximum".
TEST_F(PropertyBrowser, RangesClampEveryEdit)
{
    ZNPropertySheet sheet = sampleSheet();
    sheet.setValue(QStringLiteral("Count"), 10);
    browser.setSheet(sheet);

    auto* spin = qobject_cast<QSpinBox*>(openEditor(QStringLiteral("Count")));
    ASSERT_NE(spin, nullptr);
    EXPECT_EQ(spin->minimum(), 1);
    EXPECT_EQ(spin->maximum(), 10);
    QTest::keyClick(spin, Qt::Key_Up);
    commit(spin);
    EXPECT_EQ(edited.count(), 0) << "10 stepped up stays 10";

    typeAndCommit(QStringLiteral("Count"), QStringLiteral("11"));
    for (const QList<QVariant>& report : edited) {
        EXPECT_GE(report[1].toInt(), 1);
        EXPECT_LE(report[1].toInt(), 10);
    }

    const struct {
        const char* id;
        QVariant given;
        QVariant stored;
    } cases[] = {
        {"Count", 11, 10}, {"Count", -5, 1}, {"Count", 4.6, 5}, {"Scale", 3.0, 2.0}, {"Scale", -1, 0.0},
    };
    ZNPropertyModel* model = browser.propertyModel();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.id);
        edited.clear();
        model->setData(model->indexOf(QString::fromLatin1(c.id)), c.given);
        ASSERT_EQ(edited.count(), 1);
        EXPECT_EQ(edited[0][1], c.stored);
    }
    auto* doubleSpin = qobject_cast<QDoubleSpinBox*>(openEditor(QStringLiteral("Scale")));
    ASSERT_NE(doubleSpin, nullptr);
    EXPECT_DOUBLE_EQ(doubleSpin->maximum(), 2.0);
    EXPECT_DOUBLE_EQ(doubleSpin->singleStep(), 0.25);
}

// The cell shows the current entry's name and icon; the editor lists every entry.
TEST_F(PropertyBrowser, EnumerationsShowNamesAndIconsAndReportTheIndex)
{
    const QModelIndex method = browser.indexOf(QStringLiteral("Method"));
    EXPECT_EQ(method.data().toString(), QStringLiteral("Minimum"));
    const QImage shown = method.data(Qt::DecorationRole).value<QIcon>().pixmap(16, 16).toImage();
    EXPECT_EQ(shown.pixelColor(8, 8), kMethodColours[1]);

    auto* combo = qobject_cast<QComboBox*>(openEditor(QStringLiteral("Method")));
    ASSERT_NE(combo, nullptr);
    ASSERT_EQ(combo->count(), kMethodNames.size());
    for (int i = 0; i < combo->count(); ++i) {
        EXPECT_EQ(combo->itemText(i), kMethodNames[i]);
        EXPECT_EQ(combo->itemIcon(i).pixmap(16, 16).toImage().pixelColor(8, 8), kMethodColours[i]) << i;
    }
    EXPECT_EQ(combo->currentIndex(), 1);
    QTest::keyClick(browser.viewport(), Qt::Key_Escape);

    ZNPropertyModel* model = browser.propertyModel();
    EXPECT_FALSE(model->setData(method, 3)) << "no fourth entry";
    EXPECT_FALSE(model->setData(method, -1));
    EXPECT_TRUE(model->setData(method, 0));
    ASSERT_EQ(edited.count(), 1);
    EXPECT_EQ(edited[0][1], QVariant(0));
    EXPECT_EQ(method.data().toString(), QStringLiteral("Convex"));
}

// Clicks, keys and the model's API leave read-only and disabled rows as they are.
TEST_F(PropertyBrowser, ReadOnlyAndDisabledRowsCannotBeEdited)
{
    int dialogs = 0;
    ZNPropertyModel* model = browser.propertyModel();
    const ZNPropertySheet before = browser.sheet();
    for (const char* name : {"Nb Facette", "Saved", "Tint", "Interp Size", "Show", "Style"}) {
        SCOPED_TRACE(name);
        const QString id = QString::fromLatin1(name);
        const QModelIndex value = browser.indexOf(id);
        answerColorDialog(Qt::black, &dialogs);
        click(id);
        QTest::mouseDClick(browser.viewport(), Qt::LeftButton, {}, drive.cell(id).center());
        for (Qt::Key key : {Qt::Key_Space, Qt::Key_F2, Qt::Key_X}) QTest::keyClick(&browser, key);
        QCoreApplication::processEvents();
        EXPECT_EQ(browser.indexWidget(value), nullptr) << "no editor opened";
        EXPECT_FALSE(model->setData(value, QStringLiteral("1")));
        EXPECT_FALSE(model->setData(value, Qt::Unchecked, Qt::CheckStateRole));
        EXPECT_FALSE(value.flags() & (Qt::ItemIsEditable | Qt::ItemIsUserCheckable));
        EXPECT_EQ(valueOf(id), before.property(id)->value);
        EXPECT_EQ(bool(value.flags() & Qt::ItemIsEnabled), before.property(id)->enabled) << "greyed when disabled";
    }
    EXPECT_EQ(dialogs, 0);
    EXPECT_EQ(edited.count(), 0);
}

// The host's updates change what is shown and report nothing.
TEST_F(PropertyBrowser, HostUpdatesReportNothing)
{
    EXPECT_TRUE(browser.setValue(QStringLiteral("Count"), 8));
    EXPECT_TRUE(browser.setValue(QStringLiteral("Count"), 12));  // clamped
    EXPECT_TRUE(browser.setValue(QStringLiteral("Colour"), QColor(Qt::yellow)));
    EXPECT_TRUE(browser.setEnabled(QStringLiteral("Interp Size"), true));
    EXPECT_TRUE(browser.setEnabled(QStringLiteral("Name"), false));
    EXPECT_FALSE(browser.setValue(QStringLiteral("Method"), 7)) << "no such entry";
    EXPECT_FALSE(browser.setValue(QStringLiteral("Unknown"), 1));
    EXPECT_FALSE(browser.setEnabled(QStringLiteral("Unknown"), true));
    EXPECT_EQ(edited.count(), 0);

    EXPECT_EQ(browser.indexOf(QStringLiteral("Count")).data().toString(), QStringLiteral("10"));
    EXPECT_EQ(valueOf(QStringLiteral("Colour")), QColor(Qt::yellow));
    EXPECT_EQ(valueOf(QStringLiteral("Method")), 1);
    EXPECT_TRUE(browser.sheet().property(QStringLiteral("Interp Size"))->enabled);
    EXPECT_FALSE(browser.sheet().property(QStringLiteral("Name"))->enabled);

    // The rows follow: the enabled row edits, the disabled one does not.
    typeAndCommit(QStringLiteral("Interp Size"), QStringLiteral("40"));
    ASSERT_EQ(edited.count(), 1);
    EXPECT_EQ(edited[0][1], QVariant(40));
    EXPECT_EQ(openEditor(QStringLiteral("Name")), nullptr);
}

TEST_F(PropertyBrowser, GroupsSpanBothColumnsInBoldAndLabelsDifferingFromIdsShowTheId)
{
    ZNPropertyModel* model = browser.propertyModel();
    ASSERT_EQ(model->rowCount(), 2);
    for (int row = 0; row < 2; ++row) {
        EXPECT_TRUE(browser.isFirstColumnSpanned(row, QModelIndex()));
        EXPECT_TRUE(browser.isExpanded(model->index(row, 0)));
        EXPECT_TRUE(model->index(row, 0).data(Qt::FontRole).value<QFont>().bold());
    }
    EXPECT_EQ(browser.indexOf(QStringLiteral("Nb Facette"), 0).data().toString(), QStringLiteral("Nb Facet"));
    EXPECT_EQ(browser.indexOf(QStringLiteral("Nb Facette"), 0).data(Qt::ToolTipRole), QStringLiteral("Nb Facette"));
    EXPECT_FALSE(browser.indexOf(QStringLiteral("Name"), 0).data(Qt::ToolTipRole).isValid());
    EXPECT_TRUE(browser.alternatingRowColors());
    EXPECT_EQ(browser.header()->sectionResizeMode(0), QHeaderView::ResizeToContents);

    browser.clear();
    EXPECT_EQ(model->rowCount(), 0);
    EXPECT_EQ(browser.sheet().count(), 0);
    EXPECT_FALSE(browser.indexOf(QStringLiteral("Name")).isValid());
}

// A refresh after an edit must not make the view jump: collapsed groups stay collapsed
// and the scroll position stays, whether the rows are the same or not.
TEST(PropertyBrowserRefresh, KeepsCollapsedGroupsAndScrollWhenTheSameGroupsComeBack)
{
    auto longSheet = [](int rowsInLast, bool enabled) {
        ZNPropertySheet sheet;
        for (const char* group : {"First", "Second", "Third"})
            for (int i = 0; i < (QLatin1String(group) == QLatin1String("Third") ? rowsInLast : 30); ++i)
                sheet.addProperty(QString::fromLatin1(group), QStringLiteral("%1 %2").arg(group).arg(i),
                                  QStringLiteral("Row %1").arg(i), ZNProperty::Int, i)
                    .enabled = enabled;
        return sheet;
    };
    ZNPropertyBrowser browser;
    browser.resize(300, 200);
    browser.setSheet(longSheet(30, true));
    browser.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&browser));
    browser.collapse(browser.propertyModel()->index(0, 0));
    QScrollBar* bar = browser.verticalScrollBar();
    ASSERT_GT(bar->maximum(), 20);
    bar->setValue(bar->maximum() / 2);
    const int scroll = bar->value();

    const struct {
        const char* what;
        ZNPropertySheet sheet;
    } refreshes[] = {{"same rows, other flags", longSheet(30, false)}, {"one row less", longSheet(29, true)}};
    for (const auto& r : refreshes) {
        SCOPED_TRACE(r.what);
        browser.setSheet(r.sheet);
        QCoreApplication::processEvents();
        EXPECT_EQ(bar->value(), scroll);
        EXPECT_FALSE(browser.isExpanded(browser.propertyModel()->index(0, 0)));
        EXPECT_TRUE(browser.isExpanded(browser.propertyModel()->index(1, 0)));
    }

    ZNPropertySheet other;
    other.addProperty(QStringLiteral("Other"), QStringLiteral("x"), QStringLiteral("x"), ZNProperty::Int, 1);
    browser.setSheet(other);
    EXPECT_EQ(bar->value(), 0);
    EXPECT_TRUE(browser.isExpanded(browser.propertyModel()->index(0, 0)));
    browser.setSheet(longSheet(30, true));
    EXPECT_FALSE(browser.isExpanded(browser.propertyModel()->index(0, 0))) << "the user's choice is remembered";
}

// The host re-reads the object's sheet from inside the edit's report, as the studio
// does: the edit is reported once and the new sheet is shown, even when it has other rows.
TEST_F(PropertyBrowser, AHostReplacingTheSheetDuringTheReportIsSafe)
{
    for (bool otherRows : {false, true}) {
        SCOPED_TRACE(otherRows);
        edited.clear();
        browser.setSheet(sampleSheet());
        auto refresh = QObject::connect(&browser, &ZNPropertyBrowser::propertyEdited, &browser,
                               [this, otherRows](const QString& id, const QVariant& value) {
                                   ZNPropertySheet sheet = browser.sheet();
                                   sheet.setValue(id, value);
                                   sheet.property(QStringLiteral("Interp Size"))->enabled = true;
                                   if (otherRows)
                                       sheet.addProperty(QStringLiteral("Added"), QStringLiteral("New"),
                                                         QStringLiteral("New"), ZNProperty::Int, 1);
                                   browser.setSheet(sheet);
                               });
        typeAndCommit(QStringLiteral("Count"), QStringLiteral("3"));
        pickFromPopup(QStringLiteral("Method"), 0);
        QObject::disconnect(refresh);
        QCoreApplication::processEvents();
        ASSERT_EQ(edited.count(), 2);
        EXPECT_EQ(valueOf(QStringLiteral("Count")), 3);
        EXPECT_EQ(valueOf(QStringLiteral("Method")), 0);
        EXPECT_TRUE(browser.sheet().property(QStringLiteral("Interp Size"))->enabled);
        EXPECT_EQ(browser.sheet().property(QStringLiteral("New")) != nullptr, otherRows);
    }
}

TEST(PropertyDelegate, DoubleEditorsShowEnoughDecimalsForTheValueAndTheStep)
{
    const struct {
        double value, step;
        int decimals;
    } cases[] = {{1.0, 0.0, 1}, {0.5, 0.25, 2}, {0.125, 1.0, 3}, {0.123456789, 0.1, 6}, {1e6, 10, 1}};
    for (const auto& c : cases)
        EXPECT_EQ(ZNPropertyDelegate::decimalsFor(c.value, c.step), c.decimals) << c.value << " " << c.step;
}
