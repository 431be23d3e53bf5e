// The studio's fault likelihood: computed from an open seismic volume on a worker, with
// progress and cancel, its volumes joining the project and its views, and the
// extraction starting from it.
#include <algorithm>
#include <memory>

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>
#include <QTimer>

#include <pictures.h>
#include <synthetic/syntheticseismic.h>
#include <znattributesettingsdialog.h>
#include <znprogresspanel.h>
#include <znsectionview.h>

#include "studiotestfixture.h"
#include "studioviews.h"

namespace {

// The built-in synthetic seismic at n^3, as an open volume named "Seismic".
ZNVolume* addSeismic(StudioWindow& window, int n)
{
    fault::synthetic::SyntheticSeismic s =
        fault::synthetic::generateSyntheticSeismic(fault::synthetic::defaultSeismicScene(n, n, n, 1));
    if (!s.ok()) return nullptr;
    auto image = std::make_shared<const ZN3DImage<float>>(std::move(s.amplitude));
    return window.project()->addVolume(std::make_unique<ZNVolume>(image, georef::UnitObject(), "Seismic"));
}

QStringList volumeNames(const StudioWindow& window)
{
    QStringList names;
    for (const ZNVolume* v : window.project()->volumes()) names << v->name();
    return names;
}

int viewsOf(const StudioWindow& window, const ZNVolume* volume)
{
    const QList<ZNSectionView*> views = window.views()->sectionViews();
    return static_cast<int>(std::count_if(views.begin(), views.end(),
                                          [&](const ZNSectionView* v) { return window.views()->volumeOf(v) == volume; }));
}

QStringList actionTexts(const QMenu& menu)
{
    QStringList texts;
    for (const QAction* a : menu.actions()) texts << a->text();
    return texts;
}

} // namespace

TEST_F(StudioTest, TheLikelihoodOfASeismicVolumeJoinsTheProjectInViewsAndFaultsAreExtractedFromIt)
{
    ZNVolume* seismic = addSeismic(*window, 64);
    ASSERT_NE(seismic, nullptr);
    QSignalSpy finished(window.get(), &StudioWindow::taskFinished);
    window->computeFaultLikelihood(seismic, fault::attribute::FaultAttributeSettings());
    ASSERT_TRUE(waitForTasks());
    ASSERT_EQ(finished.count(), 1);
    EXPECT_TRUE(finished[0][1].toBool());
    ASSERT_EQ(volumeNames(*window),
              (QStringList{"Seismic", "Fault likelihood of Seismic", "Fault strike of Seismic", "Fault dip of Seismic"}));

    const QList<ZNVolume*> volumes = window->project()->volumes();
    for (const ZNVolume* v : volumes) {
        EXPECT_EQ(v->blocSpace(), seismic->blocSpace()) << v->name().toStdString();
        EXPECT_EQ(viewsOf(*window, v), 1) << v->name().toStdString();
    }
    // Likelihood and angles on a perceptual map, the seismic on the seismic one.
    for (ZNSectionView* view : window->views()->sectionViews())
        EXPECT_EQ(view->engine().colourScale().map(), window->views()->volumeOf(view) == seismic
                                                          ? img::ColourScale::Map::Seismic
                                                          : img::ColourScale::Map::Viridis);
    ZNVolume* likelihood = volumes[1];
    EXPECT_GE(likelihood->valueRange().first, 0.0f);
    EXPECT_GT(likelihood->valueRange().second, 0.5f);   // the planted faults
    EXPECT_LE(likelihood->valueRange().second, 1.0f);
    EXPECT_LE(volumes[2]->valueRange().second, 360.0f);  // strike, degrees
    EXPECT_LE(volumes[3]->valueRange().second, 90.0f);   // dip, degrees
    picturetest::keepPicture(window->grab().toImage(), "studio_likelihood");
    // The likelihood is the current volume: the extraction starts from it.
    EXPECT_EQ(window->objectTree()->currentItem(), window->studioTree()->volumeItem(likelihood));

    window->extractFaults(likelihood, fault::FaultExtractionSettings());
    ASSERT_TRUE(waitForTasks());
    ASSERT_EQ(window->project()->faultSets().size(), 1);
    EXPECT_GE(treeNames(window->project()->faultSets().first()).size(), 2);
    EXPECT_TRUE(logTexts(ZNEventBus::Error).isEmpty());
}

TEST_F(StudioTest, TheMenusOfferTheLikelihoodAndItsDialogChoosesWhatIsComputed)
{
    ZNVolume* seismic = addSeismic(*window, 40);
    ASSERT_NE(seismic, nullptr);
    std::unique_ptr<QMenu> volumeMenu(window->objectTree()->buildContextMenu(window->studioTree()->volumeItem(seismic)));
    EXPECT_TRUE(actionTexts(*volumeMenu).contains("Compute Fault Likelihood..."));

    QAction* compute = nullptr;
    for (QAction* a : window->findChild<QMenu*>("faultsMenu")->actions())
        if (a->text() == "Compute Fault &Likelihood...") compute = a;
    ASSERT_NE(compute, nullptr);
    // The dialog is modal: answered once it shows, without the strike and dip volumes.
    bool answered = false;
    QTimer::singleShot(0, window.get(), [&] {
        auto* dialog = window->findChild<ZNAttributeSettingsDialog*>();
        if (!dialog) return;
        dialog->findChild<QCheckBox*>("withOrientation")->setChecked(false);
        dialog->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->click();
        answered = true;
    });
    compute->trigger();
    ASSERT_TRUE(answered);
    ASSERT_TRUE(waitForTasks());
    EXPECT_EQ(volumeNames(*window), (QStringList{"Seismic", "Fault likelihood of Seismic"}));
}

TEST_F(StudioTest, CancelOnTheProgressPanelStopsTheLikelihoodAndLeavesTheProjectAsItWas)
{
    ZNVolume* seismic = addSeismic(*window, 160);   // long enough for the test to click
    ASSERT_NE(seismic, nullptr);
    QSignalSpy finished(window.get(), &StudioWindow::taskFinished);
    window->computeFaultLikelihood(seismic, fault::attribute::FaultAttributeSettings());
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return !window->progressPanel()->findChildren<QPushButton*>("cancelButton").isEmpty(); }, 10000));
    QTest::mouseClick(window->progressPanel()->findChildren<QPushButton*>("cancelButton").first(), Qt::LeftButton);
    ASSERT_TRUE(waitForTasks());
    ASSERT_EQ(finished.count(), 1);
    EXPECT_FALSE(finished[0][1].toBool());
    EXPECT_EQ(volumeNames(*window), QStringList{"Seismic"});
    EXPECT_TRUE(logTexts(ZNEventBus::Information).contains("Fault likelihood cancelled"));
    EXPECT_TRUE(logTexts(ZNEventBus::Error).isEmpty());
}
