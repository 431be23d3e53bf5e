#include <QSet>
#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <faultmesh.h>
#include <mapviewpicture.h>
#include <perspectivepicture.h>
#include <picturefile.h>
#include <unfoldedpicture.h>

#include "picturetesthelpers.h"

using namespace kfaults;

TEST(PictureFile, ASavedPngReadsBackWithItsSizeAndNoTemporaryFileIsLeft)
{
    QTemporaryDir dir;
    QImage image(30, 20, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::red);
    const QString path = dir.filePath(QStringLiteral("picture.png"));
    QString problem = QStringLiteral("unchanged?");
    ASSERT_TRUE(savePng(image, path, &problem));
    EXPECT_TRUE(problem.isEmpty());
    const QImage back(path);
    EXPECT_EQ(back.size(), QSize(30, 20));
    EXPECT_EQ(back.pixelColor(5, 5), QColor(Qt::red));
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList{QStringLiteral("picture.png")});
}

TEST(PictureFile, NullImagesAndMissingFoldersAreRefused)
{
    QTemporaryDir dir;
    QString problem;
    EXPECT_FALSE(savePng(QImage(), dir.filePath(QStringLiteral("a.png")), &problem));
    EXPECT_EQ(problem, dir.filePath(QStringLiteral("a.png")) + QStringLiteral(": no picture to save"));
    EXPECT_FALSE(savePng(QImage(2, 2, QImage::Format_RGB32), dir.filePath(QStringLiteral("no/b.png")), &problem));
    EXPECT_EQ(problem, dir.filePath(QStringLiteral("no/b.png")) + QStringLiteral(": cannot be written (No such file or directory)"));
    EXPECT_TRUE(QDir(dir.path()).entryList(QDir::Files).isEmpty());
}

TEST(FaultColour, TheFirstTwelveFaultsGetDistinctColours)
{
    QSet<QRgb> seen;
    for (int i = 0; i < 12; ++i) seen.insert(faultColour(i).rgb());
    EXPECT_EQ(seen.size(), 12);
    EXPECT_NE(faultColour(12), faultColour(0)) << "the second cycle is darker";
    EXPECT_EQ(faultColour(-1), QColor(Qt::gray));
}

// A scene like the built-in demonstration: planar and disc-shaped faults, two crossing.
// With KORVALITH_KEEP_PICTURES set to a folder the three pictures are left there.
TEST(ReportPictures, ADemonstrationSceneRendersAllThreePictures)
{
    const std::vector<FaultMesh> faults = {
        picturetest::planarFault("F1 north-south", faultColour(0), 2000, 2000, 1200, 10, 60, 3200, 1400, 24),
        picturetest::planarFault("F2 crossing", faultColour(1), 2200, 2300, 1250, 130, 55, 2600, 1200, 24),
        picturetest::discFault("F3 disc", faultColour(2), 3600, 1000, 1100, 70, 75, 700, 30),
        picturetest::planarFault("F4 antithetic", faultColour(3), 800, 2600, 1300, 190, 65, 2000, 900, 20)};
    IdImage ids(160, 90);
    for (int row = 0; row < 90; ++row)
        for (int column = 0; column < 160; ++column) {
            const double dx = (column - 80) / 70.0, dy = (row - 45) / 40.0;
            if (dx * dx + dy * dy <= 1.0) ids.set(column, row, 3 + (column / 23) + 7 * (row / 30));
        }
    const QString keep = picturetest::keepFolder();
    for (const QSize size : {QSize(1200, 900), QSize(640, 480)}) {
        MapViewSettings map;
        map.width = size.width(), map.height = size.height();
        map.verticalUnit = QStringLiteral("ms");
        PerspectiveSettings perspective;
        perspective.width = size.width(), perspective.height = size.height();
        perspective.verticalUnit = QStringLiteral("ms");
        UnfoldedSettings unfolded;
        unfolded.width = size.width(), unfolded.height = size.height();
        const QImage pictures[] = {renderMapView(faults, map), renderPerspective(faults, perspective),
                                   renderUnfolded(ids, unfolded)};
        const char* names[] = {"map", "perspective", "unfolded"};
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(pictures[i].size(), size) << names[i];
            const QString file = QStringLiteral("%1_%2x%3.png").arg(QLatin1String(names[i])).arg(size.width()).arg(size.height());
            if (!keep.isEmpty()) {
                EXPECT_TRUE(savePng(pictures[i], QDir(keep).filePath(file)));
            }
        }
    }
}
