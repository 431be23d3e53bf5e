#include <gtest/gtest.h>

#include <QAbstractSpinBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QPushButton>
#include <QSpinBox>

#include <znextractionsettingsdialog.h>

namespace {
bool sameSettings(const fault::FaultExtractionSettings& a, const fault::FaultExtractionSettings& b)
{
    return a.extraction.likelihoodThreshold == b.extraction.likelihoodThreshold &&
           a.extraction.maxPatchSize == b.extraction.maxPatchSize &&
           a.extraction.maxPlaneDeviation == b.extraction.maxPlaneDeviation &&
           a.extraction.growthIterations == b.extraction.growthIterations &&
           a.extraction.maxMergeCost == b.extraction.maxMergeCost && a.sticks.sectionSpacing == b.sticks.sectionSpacing &&
           a.sticks.pointSpacing == b.sticks.pointSpacing && a.sticks.minVoxelsPerFault == b.sticks.minVoxelsPerFault &&
           a.surfaceMethod == b.surfaceMethod;
}
} // namespace

TEST(ExtractionSettingsDialog, StartsFromTheCommandLinesDefaultsAndExplainsEveryField)
{
    ZNExtractionSettingsDialog dialog({"likelihood.sgy", "other.bloc"});
    EXPECT_TRUE(sameSettings(dialog.settings(), fault::FaultExtractionSettings()));
    EXPECT_EQ(dialog.volumeIndex(), 0);
    const QList<QWidget*> fields = dialog.findChildren<QWidget*>();
    int explained = 0;
    for (QWidget* field : fields)
        if (qobject_cast<QAbstractSpinBox*>(field) || qobject_cast<QComboBox*>(field)) {
            EXPECT_FALSE(field->toolTip().isEmpty()) << field->objectName().toStdString();
            ++explained;
        }
    EXPECT_EQ(explained, 10);
}

TEST(ExtractionSettingsDialog, SettingsRoundTripStayInTheirRangesAndRestoreToDefaults)
{
    ZNExtractionSettingsDialog dialog({"v"});
    fault::FaultExtractionSettings s;
    s.extraction.likelihoodThreshold = 0.35;
    s.extraction.maxPatchSize = 900;
    s.extraction.maxPlaneDeviation = 1.5;
    s.extraction.growthIterations = 20;
    s.extraction.maxMergeCost = 3.0;
    s.sticks.sectionSpacing = 12;
    s.sticks.pointSpacing = 5;
    s.sticks.minVoxelsPerFault = 50;
    s.surfaceMethod = 0;
    dialog.setSettings(s);
    EXPECT_TRUE(sameSettings(dialog.settings(), s));

    fault::FaultExtractionSettings wild = s;
    wild.extraction.likelihoodThreshold = 7.0;  // beyond the range: clamped
    wild.extraction.maxMergeCost = -1.0;
    dialog.setSettings(wild);
    EXPECT_DOUBLE_EQ(dialog.settings().extraction.likelihoodThreshold, 1.0);
    EXPECT_GT(dialog.settings().extraction.maxMergeCost, 0.0);

    dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::RestoreDefaults)->click();
    EXPECT_TRUE(sameSettings(dialog.settings(), fault::FaultExtractionSettings()));
}

TEST(ExtractionSettingsDialog, WithoutAVolumeThereIsNothingToAccept)
{
    ZNExtractionSettingsDialog dialog({});
    EXPECT_EQ(dialog.volumeIndex(), -1);
    EXPECT_FALSE(dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->isEnabled());
}
