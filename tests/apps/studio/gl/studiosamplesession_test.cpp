// A new user's first session on a real survey: open the sample SEG-Y, pick two faults on a
// few inlines with the mouse, undo and redo, see both surfaces in the 3D view, save, close,
// open the file again and find the same faults.
#include <QDir>
#include <QMdiArea>
#include <QUndoStack>

#include <zn3dfaultpatch.h>
#include <zn3dviewer.h>
#include <znsectionview.h>

#include "pictures.h"
#include "studio3dviews.h"
#include "studioviews.h"
#include "studiotestfixture.h"

namespace {

using picturetest::countPixels;
using picturetest::keepPicture;
using picturetest::sameHue;

// Every fault's hand-picked points, in descriptor order, by fault name.
std::map<QString, std::vector<core::vec3>> handPointsByName(const FaultSetDocument& document)
{
    std::map<QString, std::vector<core::vec3>> points;
    for (int faultId : document.faultIds()) {
        core::Array<core::PointWithBool> picked;
        document.faultSet()->getFaultPickedPointArray(faultId, picked);
        std::vector<core::vec3>& hand = points[document.faultName(faultId)];
        for (const core::PointWithBool& p : picked)
            if (!p.flag && p.position().x != -9999.0) hand.push_back(p.position());
    }
    return points;
}

} // namespace

TEST_F(StudioTest, PickTwoFaultsOnTheSampleSurveyUndoRedoSeeThemIn3DSaveAndFindThemAgain)
{
    window->openFiles({QStringLiteral(KORVALITH_SAMPLES_DIR "/f3.sgy")});
    ASSERT_TRUE(waitForTasks());
    ASSERT_EQ(window->project()->volumes().size(), 1);
    ZNSectionView* view = window->views()->sectionViews().value(0);
    ASSERT_NE(view, nullptr);
    ASSERT_EQ(window->views3D()->views().size(), 1);
    ZN3DViewer* viewer3D = window->views3D()->views().first();
    window->mdiArea()->tileSubWindows();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(viewer3D));
    viewer3D->renderToImage();
    ASSERT_TRUE(viewer3D->isOpenGLReady()) << viewer3D->openGLError().toStdString();

    ZNSeismicViewerAbstractEngine& engine = view->engine();
    const auto click = [&](double c, double r) {
        QTest::mouseClick(view->viewer(), Qt::LeftButton, Qt::NoModifier,
                          engine.imageToViewport(QPointF(c, r)).toPoint());
    };
    const auto toInline = [&](int index) {
        engine.setSection(ZNBlocViewerEngine::SectionKind::Inline, index);
        emit view->viewer()->sectionChanged();
    };
    window->setInteraction(StudioWindow::Interaction::Pick);
    FaultSetDocument* document = window->currentDocument();
    ASSERT_NE(document, nullptr);

    // Two faults of three sticks of four points, on inlines 3, 9 and 15 of the survey.
    const int inlines[] = {3, 9, 15};
    for (int fault = 0; fault < 2; ++fault) {
        if (fault == 1) QTest::keyClick(view->viewer(), Qt::Key_N);
        for (int i : inlines) {
            toInline(i);
            for (double r : {20.0, 35.0, 50.0, 65.0}) click(fault == 0 ? 3.0 + r / 15.0 : 15.0 - r / 20.0, r);
        }
    }
    ASSERT_EQ(document->faultIds().size(), 2);
    const auto picked = handPointsByName(*document);
    for (const auto& fault : picked) EXPECT_EQ(fault.second.size(), 12u) << fault.first.toStdString();

    // Undo the last three picks, redo them: the same points.
    for (int k = 0; k < 3; ++k) document->undoStack()->undo();
    auto undone = handPointsByName(*document);
    std::size_t count = 0;
    for (const auto& fault : undone) count += fault.second.size();
    EXPECT_EQ(count, 21u);
    for (int k = 0; k < 3; ++k) document->undoStack()->redo();
    EXPECT_EQ(handPointsByName(*document), picked);

    // Both surfaces meshed and drawn in the 3D view in their colours.
    viewer3D->engine().fitAll();
    const QImage image = viewer3D->renderToImage().convertToFormat(QImage::Format_RGB32);
    keepPicture(image, QStringLiteral("studio_f3_two_faults"));
    for (int faultId : document->faultIds()) {
        EXPECT_GT(document->surface(faultId)->getFacettes().size(), 0u) << faultId;
        EXPECT_GT(countPixels(image, image.rect(), sameHue(document->faultColour(faultId))), 100) << faultId;
    }

    // Saved, closed, opened again: the same faults with the same points.
    QTemporaryDir folder;
    const QString path = QDir(folder.path()).filePath(QStringLiteral("f3_picks.faultset"));
    ASSERT_TRUE(window->saveFaultSet(document, path));
    ASSERT_TRUE(window->closeFaultSet(document));
    window->openFaultSet(path);
    ASSERT_TRUE(waitForTasks());
    ASSERT_EQ(window->project()->faultSets().size(), 1);
    const auto reopened = handPointsByName(*window->project()->faultSets().first());
    ASSERT_EQ(reopened.size(), picked.size());
    for (const auto& fault : picked) {
        const auto it = reopened.find(fault.first);
        ASSERT_NE(it, reopened.end()) << fault.first.toStdString();
        ASSERT_EQ(it->second.size(), fault.second.size());
        for (std::size_t k = 0; k < fault.second.size(); ++k) {
            EXPECT_NEAR(it->second[k].x, fault.second[k].x, 1e-3);
            EXPECT_NEAR(it->second[k].y, fault.second[k].y, 1e-3);
            EXPECT_NEAR(it->second[k].z, fault.second[k].z, 1e-3);
        }
    }
}
