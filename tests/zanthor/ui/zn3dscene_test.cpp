#include <gtest/gtest.h>

#include <zn3dscene.h>

#include "testgeometry.h"
#include "testmeshes.h"

namespace {

ZN3DPolylineItem twoSticks()
{
    ZN3DPolylineItem lines;
    lines.points = {{0, 0, 0}, {0, 10, 0}, {-9999, -9999, -9999}, {5, 0, 5}, {5, 20, 5}};
    return lines;
}

} // namespace

TEST(Scene, ItemsAreSetUpdatedAndRemovedByTheHostsIds)
{
    ZN3DScene scene;
    int changes = 0;
    scene.setChangedCallback([&] { ++changes; });
    EXPECT_FALSE(scene.setItem(-9999, twoSticks()));
    EXPECT_EQ(changes, 0);
    ASSERT_TRUE(scene.setItem(7, twoSticks()));
    ASSERT_TRUE(scene.setItem(3, ZN3DReferencePointItem{{1, 2, 3}}, false));
    EXPECT_EQ(changes, 2);
    ASSERT_EQ(scene.count(), 2);
    EXPECT_EQ(scene.items()[0].id, 7);  // in the order first set
    EXPECT_EQ(scene.item(7)->kind(), ZN3DScene::Kind::Polyline);
    EXPECT_FALSE(scene.item(3)->pickable);
    EXPECT_NE(scene.content<ZN3DPolylineItem>(7), nullptr);
    EXPECT_EQ(scene.content<ZN3DBoxItem>(7), nullptr);
    EXPECT_EQ(scene.item(99), nullptr);

    // Replacing keeps the place and the visibility.
    ASSERT_TRUE(scene.setVisible(7, false));
    ASSERT_TRUE(scene.setItem(7, ZN3DBoxItem{}));
    EXPECT_EQ(scene.items()[0].id, 7);
    EXPECT_FALSE(scene.item(7)->visible);
    EXPECT_EQ(scene.item(7)->kind(), ZN3DScene::Kind::Box);

    EXPECT_TRUE(scene.removeItem(7));
    EXPECT_EQ(scene.item(7), nullptr);
    EXPECT_EQ(scene.item(3)->id, 3);  // the others are still found
    for (bool (ZN3DScene::*call)(int) : {&ZN3DScene::removeItem, &ZN3DScene::updateItem, &ZN3DScene::displayChanged})
        EXPECT_FALSE((scene.*call)(7));
    EXPECT_FALSE(scene.setVisible(7, true));
    EXPECT_FALSE(scene.setPickable(7, true));
    scene.clear();
    EXPECT_EQ(scene.count(), 0);
}

TEST(Scene, OnlyGeometryChangesGiveANewRevision)
{
    ZN3DScene scene;
    auto mesh = planarMesh({0, 0, 0}, {100, 0, 0}, {0, 0, 50}, 2, 2, Qt::red);
    scene.setItem(1, ZN3DSurfaceItem{mesh.get()});
    scene.setItem(2, twoSticks());
    const quint64 first = scene.item(1)->revision;
    EXPECT_NE(first, scene.item(2)->revision);
    const quint64 sceneRevision = scene.revision();
    scene.displayChanged(1);
    scene.setVisible(1, false);
    scene.setPickable(1, false);
    EXPECT_EQ(scene.item(1)->revision, first);
    EXPECT_GT(scene.revision(), sceneRevision);  // but the scene did change
    scene.updateItem(1);
    EXPECT_GT(scene.item(1)->revision, first);
}

TEST(Scene, BoxesFollowTheGeometryReadWhenTheItemIsSetOrUpdated)
{
    ZN3DScene scene;
    auto mesh = planarMesh({0, 100, 0}, {100, 0, 0}, {0, 0, 50}, 2, 2, Qt::red);
    scene.setItem(1, ZN3DSurfaceItem{mesh.get()});
    expectNear(scene.item(1)->box.high, {100, 100, 50}, 0.0);
    expectNear(scene.item(1)->origin, {50, 100, 25}, 0.0);
    mesh->getPoints()[0] = {-50, 100, 0};
    expectNear(scene.item(1)->box.low, {0, 100, 0}, 0.0);  // not yet told
    scene.updateItem(1);
    expectNear(scene.item(1)->box.low, {-50, 100, 0}, 0.0);

    scene.setItem(2, twoSticks());  // separators are not points
    expectNear(scene.item(2)->box.low, {0, 0, 0}, 0.0);
    expectNear(scene.item(2)->box.high, {5, 20, 5}, 0.0);
    ZN3DSectionItem section;
    section.corners = {core::vec3{0, 0, 0}, {10, 0, 0}, {10, 30, 0}, {0, 30, 0}};
    scene.setItem(3, section);
    expectNear(scene.item(3)->box.high, {10, 30, 0}, 0.0);

    // The scene's box holds what is drawn only.
    expectNear(scene.boundingBox().low, {-50, 0, 0}, 0.0);
    mesh->setHidden(true);
    expectNear(scene.boundingBox().low, {0, 0, 0}, 0.0);
    scene.setVisible(2, false);
    scene.setVisible(3, false);
    EXPECT_TRUE(scene.boundingBox().isEmpty());
}

TEST(Scene, ASurfaceWhoseObjectIsDeletedIsNoLongerDrawn)
{
    ZN3DScene scene;
    auto mesh = planarMesh({0, 0, 0}, {1, 0, 0}, {0, 0, 1}, 1, 1, Qt::red, 0.5f);
    scene.setItem(1, ZN3DSurfaceItem{mesh.get()});
    EXPECT_TRUE(scene.item(1)->isDrawn());
    EXPECT_TRUE(scene.item(1)->isTransparent());
    mesh.reset();
    EXPECT_FALSE(scene.item(1)->isDrawn());
    EXPECT_FALSE(scene.item(1)->isTransparent());
    scene.updateItem(1);
    EXPECT_TRUE(scene.item(1)->box.isEmpty());
}

TEST(Scene, PickedPointsBecomeSticksWithTheirSeparators)
{
    core::Array<core::PointWithBool> picked;
    picked.add(core::PointWithBool(1, 2, 3));
    picked.add(core::PointWithBool::separator());
    picked.add(core::PointWithBool(4, 5, 6, true));
    const ZN3DPolylineItem lines = ZN3DPolylineItem::fromPickedPoints(picked, Qt::cyan);
    ASSERT_EQ(lines.points.size(), 3u);
    expectNear(lines.points[0], {1, 2, 3}, 0.0);
    EXPECT_EQ(lines.points[1].x, -9999.0);
    expectNear(lines.points[2], {4, 5, 6}, 0.0);
    EXPECT_EQ(lines.colour, QColor(Qt::cyan));
}
