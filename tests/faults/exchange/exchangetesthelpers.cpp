#include "exchangetesthelpers.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <exchange/worldaxes.h>
#include <testgeometry.h>
#include <testservices.h>

using namespace fault::exchange;

namespace exchangetest {

QString dataPath(const char* name)
{
    return QStringLiteral(KORVALITH_TEST_DATA_DIR "/exchange/") + QLatin1String(name);
}

StickSet sampleSet(bool withLineNumbers)
{
    auto point = [withLineNumbers](double x, double y, double z, int il, int xl) {
        StickPoint p;
        p.world = worldFromFile(x, y, z);
        if (withLineNumbers) {
            p.inlineNumber = il;
            p.crosslineNumber = xl;
        }
        return p;
    };
    StickSet set;
    set.domain = VerticalDomain::Time;
    set.faults.push_back({QStringLiteral("Main Fault"),
                          {{point(456000.25, 6780000.5, 1500.0, 1201, 3301),
                            point(456010.75, 6780000.5, 1600.125, 1201, 3301),
                            point(456020.0, 6780000.5, 1700.5, core::kNoValue, core::kNoValue)},
                           {point(456000.0, 6780100.0, 1510.0, 1205, 3301),
                            point(456012.5, 6780100.0, 1620.0, 1205, 3302)}}});
    set.faults.push_back({QStringLiteral("F2"), {{point(457000.0, 6781000.0, 1400.0, 1210, 3302),
                                                  point(457000.0, 6781000.0, 1450.0, 1210, 3302),
                                                  point(457010.0, 6781000.0, 1800.0, 1210, 3303)}}});
    FaultSticks branch{QStringLiteral("North Branch 3"), {}};
    for (int s = 0; s < 3; ++s)
        branch.sticks.push_back({point(458000.0 + 50 * s, 6782000.0, 1200.0, 1300 + s, 3400),
                                 point(458010.0 + 50 * s, 6782000.0, 1250.0, 1300 + s, 3401)});
    set.faults.push_back(branch);
    return set;
}

StickSet markerSet()
{
    StickSet set;
    set.faults.push_back({QStringLiteral("marker"), {{StickPoint{}}}});
    return set;
}

void expectRefused(StickFormat format, const QByteArray& bytes, int line, const QString& expected)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("bad.txt"));
    ASSERT_TRUE(writeFileBytes(path, bytes));
    StickSet result = markerSet();
    RecordingEventBus bus;
    const ExchangeStatus status = readSticks(path, format, result);
    SCOPED_TRACE(status.message.toStdString());
    EXPECT_FALSE(status);
    EXPECT_EQ(status.line, line);
    const QString prefix = line > 0 ? QStringLiteral("bad.txt: line %1: ").arg(line)
                                    : QStringLiteral("bad.txt: ");
    EXPECT_TRUE(status.message.startsWith(prefix));
    EXPECT_TRUE(status.message.contains(expected));
    ASSERT_EQ(result.faults.size(), 1u);
    EXPECT_EQ(result.faults[0].name, QStringLiteral("marker"));
    EXPECT_TRUE(bus.contains(ZNEventBus::FileError, status.message));
}

void expectSameSticks(const StickSet& expected, const StickSet& actual, double tolerance,
                      bool compareLineNumbers)
{
    ASSERT_EQ(actual.faults.size(), expected.faults.size());
    for (size_t f = 0; f < expected.faults.size(); ++f) {
        const FaultSticks& e = expected.faults[f];
        const FaultSticks& a = actual.faults[f];
        EXPECT_EQ(a.name, e.name);
        ASSERT_EQ(a.sticks.size(), e.sticks.size()) << e.name.toStdString();
        for (size_t s = 0; s < e.sticks.size(); ++s) {
            ASSERT_EQ(a.sticks[s].size(), e.sticks[s].size()) << e.name.toStdString() << " stick " << s;
            for (size_t p = 0; p < e.sticks[s].size(); ++p) {
                const StickPoint& ep = e.sticks[s][p];
                const StickPoint& ap = a.sticks[s][p];
                expectNear(ap.world, ep.world, tolerance);
                EXPECT_EQ(ap.inlineNumber, compareLineNumbers ? ep.inlineNumber : core::kNoValue);
                EXPECT_EQ(ap.crosslineNumber, compareLineNumbers ? ep.crosslineNumber : core::kNoValue);
            }
        }
    }
}

void expectSameMesh(const TriangleMesh& expected, const TriangleMesh& actual, double tolerance)
{
    EXPECT_EQ(actual.name, expected.name);
    ASSERT_EQ(actual.vertices.size(), expected.vertices.size());
    for (size_t i = 0; i < expected.vertices.size(); ++i)
        expectNear(actual.vertices[i], expected.vertices[i], tolerance);
    EXPECT_EQ(actual.triangles, expected.triangles);
}

} // namespace exchangetest
