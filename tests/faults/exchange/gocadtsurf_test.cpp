#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <exchange/gocadtsurf.h>
#include <exchange/worldaxes.h>
#include <testservices.h>

#include "exchangetesthelpers.h"

using namespace fault::exchange;

namespace {
TriangleMesh square(const QString& name)
{
    TriangleMesh mesh;
    mesh.name = name;
    mesh.vertices = {worldFromFile(0, 0, 100), worldFromFile(10, 0, 100),
                     worldFromFile(0, 0, 110.5), worldFromFile(10, 0, 110.5)};
    mesh.triangles = {{0, 1, 2}, {1, 3, 2}};
    return mesh;
}
} // namespace

TEST(GocadTSurf, ObjectsWithSeveralFacesAtomsAndPropertiesAreRead)
{
    std::vector<TriangleMesh> meshes;
    VerticalDomain domain = VerticalDomain::Unknown;
    ASSERT_TRUE(readGocadTSurf(exchangetest::dataPath("gocad_tsurf.ts"), meshes, &domain));
    ASSERT_EQ(meshes.size(), 2u);
    EXPECT_EQ(domain, VerticalDomain::Time);
    const TriangleMesh& main = meshes[0];
    EXPECT_EQ(main.name, QStringLiteral("Main Fault"));
    EXPECT_EQ(main.vertices.size(), 6u) << "ATOM 5 reuses vertex 4";
    ASSERT_EQ(main.triangles.size(), 4u);
    EXPECT_EQ(main.triangles[2], (std::array<int, 3>{1, 5, 3}));
    EXPECT_EQ(main.vertices[3], worldFromFile(456100.0, 6780000.0, 1600.0));
    EXPECT_EQ(meshes[1].name, QStringLiteral("F2")) << "one-line HEADER";
    EXPECT_EQ(meshes[1].firstBadTriangle(), core::kNoValue);
}

TEST(GocadTSurf, TheWriterProducesTheMinimalObject)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("out.ts"));
    TriangleMesh mesh = square(QStringLiteral("Fault A"));
    mesh.vertices.resize(3);
    mesh.triangles.resize(1);
    ASSERT_TRUE(writeGocadTSurf(path, {mesh}, VerticalDomain::Depth));
    EXPECT_EQ(readFileBytes(path),
              QByteArray("GOCAD TSurf 1\n"
                         "HEADER {\n"
                         "name:\"Fault A\"\n"
                         "}\n"
                         "GOCAD_ORIGINAL_COORDINATE_SYSTEM\n"
                         "NAME Default\n"
                         "AXIS_NAME \"X\" \"Y\" \"Z\"\n"
                         "AXIS_UNIT \"m\" \"m\" \"m\"\n"
                         "ZPOSITIVE Depth\n"
                         "END_ORIGINAL_COORDINATE_SYSTEM\n"
                         "TFACE\n"
                         "VRTX 1 0.000000 0.000000 100.000000\n"
                         "VRTX 2 10.000000 0.000000 100.000000\n"
                         "VRTX 3 0.000000 0.000000 110.500000\n"
                         "TRGL 1 2 3\n"
                         "END\n"));
}

TEST(GocadTSurf, RoundTripKeepsNamesVerticesTrianglesAndDomain)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("faults.ts"));
    const std::vector<TriangleMesh> written = {square(QStringLiteral("Main Fault")),
                                               square(QStringLiteral("F2")), TriangleMesh{}};
    ASSERT_TRUE(writeGocadTSurf(path, written, VerticalDomain::Time));
    std::vector<TriangleMesh> read;
    VerticalDomain domain = VerticalDomain::Unknown;
    ASSERT_TRUE(readGocadTSurf(path, read, &domain, QStringLiteral("Unnamed")));
    ASSERT_EQ(read.size(), written.size());
    exchangetest::expectSameMesh(written[0], read[0], 1e-6);
    exchangetest::expectSameMesh(written[1], read[1], 1e-6);
    EXPECT_EQ(read[2].name, QStringLiteral("Unnamed")) << "an empty name reads as the default";
    EXPECT_TRUE(read[2].vertices.empty());
    EXPECT_EQ(domain, VerticalDomain::Time);
}

TEST(GocadTSurf, ABadTriangleRefusesTheWriteAndKeepsThePreviousFile)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("out.ts"));
    ASSERT_TRUE(writeFileBytes(path, "previous"));
    TriangleMesh mesh = square(QStringLiteral("F"));
    mesh.triangles.push_back({0, 1, 4});
    RecordingEventBus bus;
    const ExchangeStatus status = writeGocadTSurf(path, {mesh}, VerticalDomain::Depth);
    EXPECT_FALSE(status);
    EXPECT_TRUE(status.message.contains(QStringLiteral("triangle 2 of F")));
    EXPECT_EQ(readFileBytes(path), QByteArray("previous"));
}

TEST(GocadTSurf, ATriangleOnAnUnknownVertexIsAnErrorAtItsLine)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("bad.ts"));
    ASSERT_TRUE(writeFileBytes(path, "GOCAD TSurf 1\nTFACE\nVRTX 1 0 0 0\nVRTX 2 1 0 0\n"
                                               "TRGL 1 2 9\nEND\n"));
    std::vector<TriangleMesh> meshes(1);
    VerticalDomain domain = VerticalDomain::Depth;
    RecordingEventBus bus;
    const ExchangeStatus status = readGocadTSurf(path, meshes, &domain);
    EXPECT_FALSE(status);
    EXPECT_EQ(status.line, 5);
    EXPECT_TRUE(status.message.contains(QStringLiteral("TRGL refers to vertex \"9\"")));
    EXPECT_EQ(meshes.size(), 1u);
    EXPECT_EQ(domain, VerticalDomain::Depth);
}
