// Fault stick files written and read back through ZNFaultApiFunctions.
#include <gtest/gtest.h>

#include <memory>

#include <QTemporaryDir>

#include <3dobject/zn3dobjectdraw.h>
#include <testfiles.h>
#include <testservices.h>
#include <znfaultapifunctions.h>
#include <znfaultpatchmanager.h>

#include "surfacefixtures.h"

namespace {

// `faults` faults of three vertical sticks of four points each, separators between sticks.
core::MultiArray<core::vec3> stickRows(int faults)
{
    core::MultiArray<core::vec3> rows(faults);
    for (int f = 0; f < faults; ++f)
        for (int s = 0; s < 3; ++s) {
            if (s > 0) rows.addElement(f, core::vec3(-9999, -9999, -9999), false);
            for (int k = 0; k < 4; ++k)
                rows.addElement(f, core::vec3(1000.0 * f + 100.0 * s, 500.0 + 50.0 * k, 2000.0 + 10.0 * s), false);
        }
    return rows;
}

std::vector<core::vec3> row(const core::MultiArray<core::vec3>& rows, int r)
{
    return std::vector<core::vec3>(rows.getArray(r), rows.getArray(r) + rows.getCount(r));
}

class FaultStickFiles : public ::testing::Test {
protected:
    QString path(const char* name = "sticks.flt") const { return m_dir.filePath(QLatin1String(name)); }
    QTemporaryDir m_dir;
};

} // namespace

TEST_F(FaultStickFiles, WrittenSticksComeBackWithNamesCrsAndDomain)
{
    const georef::Crs utm = georef::Crs::fromEpsg(32631);
    for (bool is2D : {false, true})
        for (bool inTime : {false, true}) {
            const core::MultiArray<core::vec3> sticks = stickRows(3);
            const QStringList names{"A", "B", "C"};
            ASSERT_TRUE(ZNFaultApiFunctions::writeFaultStick(path(), names, sticks, is2D, inTime, utm));
            EXPECT_EQ(ZNFaultApiFunctions::readFaultStickNames(path(), is2D), names);
            EXPECT_EQ(ZNFaultApiFunctions::isFaultStickDomainInTime(path(), is2D), inTime);
            const std::unique_ptr<core::MultiArray<core::vec3>> read(
                ZNFaultApiFunctions::readFaultStickPolyLine(path(), is2D));
            ASSERT_EQ(read->getNumberOfArray(), 3);
            for (int r = 0; r < 3; ++r) EXPECT_EQ(row(*read, r), row(sticks, r)) << is2D << inTime;
            const std::unique_ptr<std::vector<georef::Crs*>> systems(
                ZNFaultApiFunctions::readFaultStickCrs(path(), is2D));
            ASSERT_EQ(systems->size(), 3u);
            for (georef::Crs* crs : *systems) {
                EXPECT_EQ(*crs, utm);
                delete crs;
            }
        }
}

TEST_F(FaultStickFiles, NamesAreCutToTheirBaseNameAndAWrongCountIsIgnored)
{
    const struct {
        int faults;
        QStringList names, read;
    } cases[] = {
        {2, {"F1.v2.old", "dir/B"}, {"F1", "B"}},
        {4, {"a", "b", "c", "d", "e"}, {"Unnamed", "Unnamed", "Unnamed", "Unnamed"}},
    };
    for (const auto& c : cases) {
        ASSERT_TRUE(ZNFaultApiFunctions::write2DFaultStick(path(), c.names, stickRows(c.faults), true, {}));
        EXPECT_EQ(ZNFaultApiFunctions::read2DFaultStickNames(path()), c.read);
    }
}

TEST_F(FaultStickFiles, GeographicCrsIsNotStoredAndAnUnpickedPatchGivesNoCrs)
{
    ASSERT_TRUE(ZNFaultApiFunctions::write3DFaultStick(path(), {}, stickRows(2), false,
                                                       georef::Crs::fromEpsg(4326)));
    std::unique_ptr<std::vector<georef::Crs*>> systems(ZNFaultApiFunctions::read3DFaultStickCrs(path()));
    ASSERT_EQ(systems->size(), 2u);
    for (georef::Crs* crs : *systems) {
        EXPECT_TRUE(crs->isEmpty());
        delete crs;
    }

    ZNFaultPatchManager set(stickRows(2));
    const int empty = set.addPatch();
    set.addPatch();  // the spare last patch
    ASSERT_NE(set.insertNewFaultLight(empty), nullptr);
    ASSERT_TRUE(set.writePickedFault(path(), false, nullptr, false));
    EXPECT_EQ(ZNFaultApiFunctions::read3DFaultStickNames(path()).size(), 3);
    systems.reset(ZNFaultApiFunctions::read3DFaultStickCrs(path()));
    EXPECT_EQ(systems->size(), 2u);
    qDeleteAll(*systems);
}

TEST_F(FaultStickFiles, LinesAreWrittenAsTwoPointSticksWithoutCrs)
{
    core::MultiArray<geom::Line> lines(1);
    for (int s = 0; s < 3; ++s)
        lines.addElement(0, geom::Line({100.0 * s, 500, 0}, {100.0 * s + 10, 700, 5}), false);
    ASSERT_TRUE(ZNFaultApiFunctions::write3DFaultStick(path(), {"L"}, lines, true));
    EXPECT_TRUE(ZNFaultApiFunctions::is3DFaultStickDomainInTime(path()));
    const std::unique_ptr<core::MultiArray<core::vec3>> read(ZNFaultApiFunctions::read3DFaultStickPolyLine(path()));
    ASSERT_EQ(read->getCount(0), 8);  // three sticks of two points, two separators
    EXPECT_EQ(read->getArray(0)[3], core::vec3(100, 500, 0));
    EXPECT_EQ(read->getArray(0)[2].x, -9999.0);
}

TEST_F(FaultStickFiles, ReadFaultGivesMeshedPatchesOrTheOneTriangulatedObject)
{
    ASSERT_TRUE(ZNFaultApiFunctions::write3DFaultStick(path(), {"A", "B"}, stickRows(2), false, {}));
    std::unique_ptr<QList<ZN3DObjectDraw*>> faults(ZNFaultApiFunctions::readFault(path()));
    ASSERT_EQ(faults->size(), 2);
    for (ZN3DObjectDraw* object : *faults) {
        auto* patch = dynamic_cast<ZN3DFaultPatch*>(object);
        ASSERT_NE(patch, nullptr);
        EXPECT_GT(patch->getNumberOfFacettes(), 0);
        EXPECT_EQ(patch->getFaultSet(), nullptr);
    }
    EXPECT_EQ((*faults)[1]->getName(), QStringLiteral("B"));
    qDeleteAll(*faults);

    ZN3DObjectDraw object;
    object.getPoints().add({0, 0, 0});
    ASSERT_TRUE(object.writeObjectFile(path("object.zn3d")));
    faults.reset(ZNFaultApiFunctions::readFault(path("object.zn3d")));
    ASSERT_EQ(faults->size(), 1);
    EXPECT_EQ((*faults)[0]->getNumberOfPoints(), 1);
    qDeleteAll(*faults);
}

TEST_F(FaultStickFiles, SticksReadBackAreCutFromEachFaultsMesh)
{
    ASSERT_TRUE(ZNFaultApiFunctions::write3DFaultStick(path(), {"A", "B"}, stickRows(2), false, {}));
    const std::unique_ptr<core::MultiArray<ZNFaultStick>> sticks(ZNFaultApiFunctions::readFaultStick(path()));
    ASSERT_EQ(sticks->getNumberOfArray(), 2);
    for (int f = 0; f < 2; ++f) {
        ASSERT_GT(sticks->getCount(f), 0);
        const ZNFaultStick& s = sticks->getArray(f)[0];
        EXPECT_EQ(s.GetFaultName(), f == 0 ? QStringLiteral("A") : QStringLiteral("B"));
        EXPECT_NEAR(s.start().y, 500.0, 1e-6);
        EXPECT_NEAR(s.end().y, 650.0, 1e-6);
    }
}

TEST_F(FaultStickFiles, OtherFilesGiveEmptyResultsAndOnlyTheDomainTestComplains)
{
    ASSERT_TRUE(writeFileBytes(path("text.flt"), "not an object file"));
    for (const QString& file : {path("text.flt"), path("missing.flt")}) {
        RecordingEventBus bus;
        EXPECT_TRUE(std::unique_ptr<QList<ZN3DObjectDraw*>>(ZNFaultApiFunctions::readFault(file))->isEmpty());
        EXPECT_EQ(std::unique_ptr<core::MultiArray<ZNFaultStick>>(ZNFaultApiFunctions::readFaultStick(file))
                      ->getNumberOfArray(), 0);
        EXPECT_TRUE(ZNFaultApiFunctions::read3DFaultStickNames(file).isEmpty());
        EXPECT_TRUE(std::unique_ptr<std::vector<georef::Crs*>>(ZNFaultApiFunctions::read3DFaultStickCrs(file))->empty());
        EXPECT_EQ(std::unique_ptr<core::MultiArray<core::vec3>>(ZNFaultApiFunctions::read3DFaultStickPolyLine(file))
                      ->getNumberOfArray(), 0);
        EXPECT_TRUE(bus.messages.isEmpty());
        EXPECT_FALSE(ZNFaultApiFunctions::is3DFaultStickDomainInTime(file));
        EXPECT_TRUE(bus.contains(ZNEventBus::Error, QStringLiteral("Unknown fault stick format")));
    }
}
