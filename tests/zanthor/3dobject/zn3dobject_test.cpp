#include <gtest/gtest.h>

#include <QBuffer>

#include <3dobject/zn3dobjectdraw.h>
#include <property/znpropertysheet.h>
#include <znbytesource.h>

#include "objectcorpus.h"

namespace {
QList<int> facettesOf(const ZN3DObject& o, int point)
{
    QList<int> result;
    const core::Array<int>* list = o.getFacettesOfPoint(point);
    if (list)
        for (int f : *list) result << f;
    return result;
}
} // namespace

TEST(ObjectTopology, ListsTheFacettesOfEveryPointOnlyWhileTheFlagIsSet)
{
    ZN3DObjectDraw object;
    objectcorpus::fill(object, 8);  // facettes (0 1 2) (1 3 2) (3 4 2)
    EXPECT_EQ(object.getFacettesOfPoint(0), nullptr);
    object.setTopology(true);
    EXPECT_EQ(facettesOf(object, 0), QList<int>{0});
    EXPECT_EQ(facettesOf(object, 2), (QList<int>{0, 1, 2}));
    EXPECT_EQ(facettesOf(object, 3), (QList<int>{1, 2}));
    EXPECT_EQ(object.getFacettesOfPoint(0)->capacity(), ZN3DObject::kTopologyInitialCapacity);
    EXPECT_EQ(object.getFacettesOfPoint(5), nullptr);
    EXPECT_EQ(object.getFacettesOfPoint(-1), nullptr);
    object.setTopology(false);
    EXPECT_EQ(object.getFacettesOfPoint(0), nullptr);
}

TEST(ObjectTopology, SkipsIndicesOutsideThePointsAndCountsADegenerateFacetteOnce)
{
    ZN3DObjectDraw object;
    object.getPoints().add(core::vec3());
    object.getPoints().add(core::vec3(1, 0, 0));
    object.getFacettes().add(ZNFacette{{0, 7, 0xffffffffu}});  // outside the points
    object.getFacettes().add(ZNFacette{{1, 1, 0}});            // degenerate
    object.setTopology(true);
    EXPECT_EQ(facettesOf(object, 0), (QList<int>{0, 1}));
    EXPECT_EQ(facettesOf(object, 1), QList<int>{1});
}

TEST(ObjectTopology, IsRebuiltAfterALoad)
{
    ZN3DObjectDraw written;
    objectcorpus::fill(written, 8);
    QBuffer buffer;
    buffer.open(QIODevice::ReadWrite);
    ASSERT_TRUE(written.writeDataStream(buffer));
    buffer.seek(0);

    ZN3DObjectDraw object;
    object.setRecordSize(8);
    object.setTopology(true);
    EXPECT_EQ(object.getFacettesOfPoint(2), nullptr);  // no points yet
    ZNDeviceSource source(buffer);
    ASSERT_TRUE(object.readDataStream(source));
    EXPECT_EQ(facettesOf(object, 2), (QList<int>{0, 1, 2}));
}

TEST(ObjectInformation, ShowsNameAndCountsReadOnlyWithTheFacetteRowIdDifferentFromItsLabel)
{
    ZN3DObjectDraw object;
    objectcorpus::fill(object, 4);
    object.setName(QStringLiteral("Horizon mesh"));
    ZNPropertySheet sheet;
    object.createInformationProperty(sheet);
    ASSERT_EQ(sheet.count(), 3);
    const struct { const char* id; const char* label; const char* value; } rows[] = {
        {"Name", "Name", "Horizon mesh"}, {"Nb Point", "Nb Point", "5"}, {"Nb Facette", "Nb Facet", "3"},
    };
    for (const auto& row : rows) {
        const ZNProperty* p = sheet.property(QString::fromLatin1(row.id));
        ASSERT_NE(p, nullptr) << row.id;
        EXPECT_EQ(p->label, QString::fromLatin1(row.label));
        EXPECT_EQ(p->value.toString(), QString::fromLatin1(row.value));
        EXPECT_TRUE(p->readOnly);
    }
}
