#include <gtest/gtest.h>

#include <QAbstractSpinBox>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QPushButton>

#include <znattributesettingsdialog.h>

namespace {
bool sameSettings(const fault::attribute::FaultAttributeSettings& a, const fault::attribute::FaultAttributeSettings& b)
{
    return a.strikeStep == b.strikeStep && a.minDip == b.minDip && a.maxDip == b.maxDip && a.dipStep == b.dipStep &&
           a.strikeSigma == b.strikeSigma && a.dipHalfLength == b.dipHalfLength &&
           a.semblancePower == b.semblancePower && a.thin == b.thin;
}
bool canAccept(ZNAttributeSettingsDialog& dialog)
{
    return dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->isEnabled();
}
} // namespace

TEST(AttributeSettingsDialog, StartsFromTheCommandLinesDefaultsExplainsEveryFieldAndCountsTheOrientations)
{
    ZNAttributeSettingsDialog dialog({"seismic.sgy", "other.bloc"});
    EXPECT_TRUE(sameSettings(dialog.settings(), fault::attribute::FaultAttributeSettings()));
    EXPECT_EQ(dialog.volumeIndex(), 0);
    EXPECT_TRUE(dialog.withOrientation());
    int explained = 0;
    for (QWidget* field : dialog.findChildren<QWidget*>())
        if (qobject_cast<QAbstractSpinBox*>(field) || qobject_cast<QComboBox*>(field) || qobject_cast<QCheckBox*>(field)) {
            EXPECT_FALSE(field->toolTip().isEmpty()) << field->objectName().toStdString();
            ++explained;
        }
    EXPECT_EQ(explained, 10);
    EXPECT_EQ(dialog.scanText(), "The scan tries 330 fault orientations.");
    EXPECT_TRUE(canAccept(dialog));
}

TEST(AttributeSettingsDialog, SettingsRoundTripAndThoseTheAttributeRefusesCannotBeAccepted)
{
    ZNAttributeSettingsDialog dialog({"v"});
    fault::attribute::FaultAttributeSettings s;
    s.strikeStep = 10.0;
    s.minDip = 60.0;
    s.maxDip = 84.0;
    s.dipStep = 12.0;
    s.strikeSigma = 4.0;
    s.dipHalfLength = 12.0;
    s.semblancePower = 6.0;
    s.thin = false;
    dialog.setSettings(s);
    EXPECT_TRUE(sameSettings(dialog.settings(), s));
    EXPECT_EQ(dialog.scanText(), "The scan tries 108 fault orientations.");   // 36 strikes x 3 dips

    struct Case {
        const char* what;
        double minDip, maxDip, strikeStep, dipStep;
    };
    for (const Case& c : {Case{"dips in the wrong order", 80.0, 60.0, 6.0, 8.0},
                          Case{"too many orientations", 20.0, 90.0, 0.5, 0.5}}) {
        fault::attribute::FaultAttributeSettings bad = s;
        bad.minDip = c.minDip;
        bad.maxDip = c.maxDip;
        bad.strikeStep = c.strikeStep;
        bad.dipStep = c.dipStep;
        dialog.setSettings(bad);
        EXPECT_FALSE(canAccept(dialog)) << c.what;
        EXPECT_EQ(dialog.scanText(), bad.problem()) << c.what;
    }
    dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::RestoreDefaults)->click();
    EXPECT_TRUE(sameSettings(dialog.settings(), fault::attribute::FaultAttributeSettings()));
    EXPECT_TRUE(canAccept(dialog));
}

TEST(AttributeSettingsDialog, WithoutAVolumeThereIsNothingToAccept)
{
    ZNAttributeSettingsDialog dialog({});
    EXPECT_EQ(dialog.volumeIndex(), -1);
    EXPECT_FALSE(canAccept(dialog));
}
