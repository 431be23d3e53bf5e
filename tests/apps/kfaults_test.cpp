#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <core/multiarray.h>
#include <exchange/gocadtsurf.h>
#include <exchange/stickformat.h>
#include <exchange/stickset.h>
#include <synthetic/syntheticscene.h>
#include <zn3dfaultpatchlight.h>
#include <znfaultpatchmanager.h>

#include <znbloc.h>

#include <commandline.h>
#include <interruptibleprogress.h>

#include "kfaultstesthelpers.h"

namespace {
using kfaultstest::Outcome;
using kfaultstest::runTool;

QStringList lines(const std::string& text)
{
    return QString::fromStdString(text).split('\n', Qt::SkipEmptyParts);
}

QJsonObject readJson(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object() : QJsonObject();
}

double areaOf(const fault::exchange::TriangleMesh& mesh)
{
    double area = 0.0;
    for (const auto& t : mesh.triangles)
        area += 0.5 * (mesh.vertices[t[1]] - mesh.vertices[t[0]]).cross(mesh.vertices[t[2]] - mesh.vertices[t[0]]).length();
    return area;
}
} // namespace

TEST(Kfaults, ExtractOnTheBuiltInVolumeRecoversEveryPlantedFaultAndPrintsOnlyItsFiles)
{
    QTemporaryDir dir;
    const std::string out = dir.filePath("out").toStdString();
    const Outcome r = runTool({"extract", "--out", out, "--unfolded", "1"});
    ASSERT_EQ(r.code, 0) << r.err;
    const QStringList files = lines(r.out);
    for (const QString& f : files) EXPECT_TRUE(QFile::exists(f)) << f.toStdString();
    ASSERT_TRUE(files.last().endsWith("report.json"));
    EXPECT_EQ(QDir(dir.filePath("out")).entryList(QDir::Files | QDir::NoDotAndDotDot | QDir::Hidden).size(),
              files.size());  // nothing else, no staging folder left

    const QJsonObject report = readJson(files.last());
    EXPECT_TRUE(report["match"].toObject()["everyPlantedFaultIsOneFault"].toBool());
    EXPECT_TRUE(report["match"].toObject()["plantedFaultsKeptApart"].toBool());
    EXPECT_GT(report["counts"].toObject()["merges"].toInt(), 0);
    EXPECT_EQ(report["surfaces"].toObject()["method"].toString(), "Minimum Envelop");
    const QJsonObject memory = report["memory"].toObject();
    EXPECT_GT(memory["peakResidentBytes"].toDouble(), memory["volumeBytes"].toDouble());

    const Outcome info = runTool({"info", QDir(dir.filePath("out")).filePath("faults.faultset").toStdString()});
    ASSERT_EQ(info.code, 0) << info.err;
    EXPECT_NE(info.out.find("kind: picked fault set"), std::string::npos);
    EXPECT_NE(info.out.find("\"Fault "), std::string::npos);
    EXPECT_EQ(info.out.find(" 0 sticks"), std::string::npos);
}

struct BadCommand {
    const char* name;
    std::vector<std::string> args;
    int code;
};

class KfaultsBadInput : public ::testing::TestWithParam<BadCommand> {};

TEST_P(KfaultsBadInput, GivesOneLineErrorNonZeroExitAndNothingOnStdout)
{
    QTemporaryDir dir;
    QFile wrong(dir.filePath("wrong.raw"));
    ASSERT_TRUE(wrong.open(QIODevice::WriteOnly));
    wrong.write(QByteArray(100, '\0'));
    wrong.close();
    std::vector<std::string> args = GetParam().args;
    for (std::string& a : args)
        if (a.rfind("@", 0) == 0) a = dir.filePath(QString::fromStdString(a.substr(1))).toStdString();
    const Outcome r = runTool(args);
    EXPECT_EQ(r.code, GetParam().code);
    EXPECT_TRUE(r.out.empty());
    EXPECT_EQ(lines(r.err).size(), 1) << r.err;
    EXPECT_FALSE(QDir(dir.filePath("out")).exists() &&
                 !QDir(dir.filePath("out")).entryList(QDir::Files).isEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Commands, KfaultsBadInput,
    ::testing::Values(
        BadCommand{"MissingFile", {"extract", "-i", "@none.sgy", "-o", "@out"}, kfaults::kExitFailure},
        BadCommand{"RawWithoutSizes", {"extract", "-i", "@wrong.raw", "-o", "@out"}, kfaults::kExitFailure},
        BadCommand{"InconsistentSizes", {"extract", "-i", "@wrong.raw", "--size", "4", "4", "4", "-o", "@out"},
                   kfaults::kExitFailure},
        BadCommand{"WrongFormat", {"info", "@wrong.raw"}, kfaults::kExitFailure},
        BadCommand{"UnknownCommand", {"frobnicate"}, kfaults::kExitUsage},
        BadCommand{"UnknownFormat", {"extract", "--format", "tiff"}, kfaults::kExitUsage},
        BadCommand{"UnknownSurfaceMethod", {"mesh", "@wrong.raw", "@out.ts", "--surface-method", "ladder"},
                   kfaults::kExitUsage}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(Kfaults, CtrlCCancelsAndLeavesNoOutput)
{
    QTemporaryDir dir;
    kfaults::InterruptibleProgress::requestInterrupt();
    const Outcome r = runTool({"extract", "--synthetic-size", "32", "-o", dir.filePath("out").toStdString()});
    EXPECT_EQ(r.code, kfaults::kExitCancelled);
    EXPECT_TRUE(r.out.empty());
    EXPECT_TRUE(QDir(dir.filePath("out")).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden).isEmpty());
    EXPECT_FALSE(kfaults::InterruptibleProgress::interrupted());
}

TEST(Kfaults, EveryCommandHasHelp)
{
    for (const char* command : {"extract", "info", "sticks", "sticks import", "sticks export", "mesh",
                                "dedupe", "synth", "likelihood"}) {
        std::vector<std::string> args;
        for (const QString& word : QString(command).split(' ')) args.push_back(word.toStdString());
        args.push_back("--help");
        const Outcome r = runTool(args);
        EXPECT_EQ(r.code, 0);
        EXPECT_NE(r.out.find("Usage"), std::string::npos) << command;
    }
}

class KfaultsSticksRoundTrip : public ::testing::TestWithParam<const char*> {};

TEST_P(KfaultsSticksRoundTrip, ExportThenImportKeepsNamesAndSticks)
{
    // Two faults, names with spaces, two and three sticks.
    core::MultiArray<core::vec3> rows(2);
    const core::vec3 separator(-9999.0, -9999.0, -9999.0);
    for (int f = 0; f < 2; ++f)
        for (int s = 0; s < 2 + f; ++s) {
            if (s > 0) rows.addElement(f, separator, false);
            for (int p = 0; p < 3; ++p)
                rows.addElement(f, core::vec3(1000.0 + 25 * s + f, 500.0 + 10 * p, 2000.0 + 25 * s), false);
        }
    ZNFaultPatchManager set(rows);
    set.findFaultLight(1)->SetFaultName("north block F1");
    set.findFaultLight(2)->SetFaultName("south F2");
    QTemporaryDir dir;
    const QString original = dir.filePath("original.faultset");
    ASSERT_TRUE(set.writePickedFault(original, false, nullptr, false));

    const std::string sticks = dir.filePath("sticks.txt").toStdString();
    const std::string back = dir.filePath("back.faultset").toStdString();
    const Outcome ex = runTool({"sticks", "export", original.toStdString(), sticks, "--format", GetParam()});
    ASSERT_EQ(ex.code, 0) << ex.err;
    const Outcome im = runTool({"sticks", "import", sticks, back, "--format", GetParam()});
    ASSERT_EQ(im.code, 0) << im.err;
    EXPECT_EQ(lines(im.out), QStringList{QString::fromStdString(back)});

    const Outcome a = runTool({"info", original.toStdString()});
    const Outcome b = runTool({"info", back});
    auto faultLines = [](const std::string& text) { return lines(text).filter(QRegularExpression("^fault ")); };
    EXPECT_EQ(faultLines(a.out), faultLines(b.out));
    EXPECT_EQ(faultLines(b.out).size(), 2);
}

INSTANTIATE_TEST_SUITE_P(Formats, KfaultsSticksRoundTrip,
                         ::testing::Values("charisma", "iesx", "opendtect", "gocad"));

TEST(Kfaults, SynthVolumeReadsBackAsBlocAndRawWithTheSameFaultsThenMeshesAndDedupes)
{
    QTemporaryDir dir;
    const QDir synth(dir.filePath("synth"));
    const Outcome s = runTool({"synth", "--size", "48", "-o", synth.path().toStdString()});
    ASSERT_EQ(s.code, 0) << s.err;
    ASSERT_EQ(lines(s.out).size(), 4);

    std::vector<QJsonObject> counts;
    const std::vector<std::vector<std::string>> inputs{
        {"-i", synth.filePath("likelihood.bloc").toStdString()},
        {"-i", synth.filePath("likelihood.float32.raw").toStdString(), "--size", "48", "48", "48"}};
    for (std::size_t k = 0; k < inputs.size(); ++k) {
        std::vector<std::string> args{"extract", "--no-pictures", "-o", dir.filePath(QString::number(k)).toStdString()};
        args.insert(args.end(), inputs[k].begin(), inputs[k].end());
        const Outcome e = runTool(args);
        ASSERT_EQ(e.code, 0) << e.err;
        QFile report(lines(e.out).last());
        ASSERT_TRUE(report.open(QIODevice::ReadOnly));
        counts.push_back(QJsonDocument::fromJson(report.readAll()).object()["counts"].toObject());
    }
    EXPECT_GT(counts[0]["faults"].toInt(), 0);
    EXPECT_EQ(counts[0], counts[1]);

    const std::string faultSet = QDir(dir.filePath("0")).filePath("faults.faultset").toStdString();
    const std::string surfaces = dir.filePath("faults.ts").toStdString();
    const Outcome m = runTool({"mesh", faultSet, surfaces});
    ASSERT_EQ(m.code, 0) << m.err;
    std::vector<fault::exchange::TriangleMesh> meshes;
    ASSERT_TRUE(fault::exchange::readGocadTSurf(QString::fromStdString(surfaces), meshes));
    EXPECT_EQ(static_cast<int>(meshes.size()), counts[0]["faults"].toInt());

    const Outcome d = runTool({"dedupe", faultSet});
    ASSERT_EQ(d.code, 0) << d.err;
    EXPECT_NE(d.out.find("duplicate pairs: 0"), std::string::npos) << d.out;
}

class KfaultsSurfaces : public ::testing::TestWithParam<const char*> {};

TEST_P(KfaultsSurfaces, PlantedPlanesGiveNamedSurfacesOnThePlanesThatMeshReproducesFromTheFaultSet)
{
    QTemporaryDir dir;
    const QDir out(dir.filePath("out"));
    const Outcome e = runTool({"extract", "--no-pictures", "--surface-method", GetParam(), "-o", out.path().toStdString()});
    ASSERT_EQ(e.code, 0) << e.err;
    const QJsonObject report = readJson(out.filePath("report.json"));
    std::vector<fault::exchange::TriangleMesh> meshes, remeshed;
    ASSERT_TRUE(fault::exchange::readGocadTSurf(out.filePath("faults.ts"), meshes));
    const std::string again = dir.filePath("again.ts").toStdString();
    ASSERT_EQ(runTool({"mesh", out.filePath("faults.faultset").toStdString(), again, "--surface-method", GetParam()}).code, 0);
    ASSERT_TRUE(fault::exchange::readGocadTSurf(QString::fromStdString(again), remeshed));
    const QJsonArray faults = report["faults"].toArray();
    ASSERT_EQ(meshes.size(), static_cast<std::size_t>(faults.size()));
    ASSERT_EQ(remeshed.size(), meshes.size());
    std::map<QString, const fault::exchange::TriangleMesh*> byName;
    for (std::size_t i = 0; i < meshes.size(); ++i) {
        const QJsonObject f = faults[static_cast<int>(i)].toObject();
        EXPECT_EQ(meshes[i].name, f["name"].toString());
        EXPECT_NEAR(areaOf(meshes[i]), f["area"].toDouble(), 1e-3 * f["area"].toDouble());
        EXPECT_EQ(remeshed[i].name, meshes[i].name);
        EXPECT_EQ(remeshed[i].triangles, meshes[i].triangles);
        byName[meshes[i].name] = &meshes[i];
    }
    // Sticks average the fault's voxels and stray where planted faults cross or leave the
    // volume: all but a few vertices lie within a voxel of the plane.
    constexpr double kMostOffPlane = 1.0;   // voxels, for 95 % of the vertices
    std::map<QString, int> faultOfPlanted;
    for (const QJsonValue& m : report["match"].toObject()["planted"].toArray())
        faultOfPlanted[m.toObject()["name"].toString()] = m.toObject()["fault"].toInt();
    for (const fault::synthetic::PlantedFault& planted : fault::synthetic::defaultScene().faults) {
        if (planted.shape != fault::synthetic::PlantedFault::Shape::Plane) continue;
        const auto mesh = byName.find(QStringLiteral("Fault %1").arg(faultOfPlanted[planted.name]));
        ASSERT_NE(mesh, byName.end()) << planted.name.toStdString();
        const fault::synthetic::PlantedFaultField plane(planted);
        std::vector<double> distances;   // world (x, y down, z) to grid (x, y, z down)
        for (const core::vec3& v : mesh->second->vertices)
            distances.push_back(std::fabs(plane.signedDistance(core::vec3(v.x, v.z, v.y))));
        ASSERT_FALSE(distances.empty());
        std::sort(distances.begin(), distances.end());
        EXPECT_LT(distances[distances.size() * 95 / 100], kMostOffPlane) << planted.name.toStdString();
    }
}

INSTANTIATE_TEST_SUITE_P(Methods, KfaultsSurfaces, ::testing::Values("minimum", "convex"));

class KfaultsImportsExchangeFiles : public ::testing::TestWithParam<const char*> {};

TEST_P(KfaultsImportsExchangeFiles, InfoShowsEveryFaultWithItsNameSticksAndPoints)
{
    const QString sticks = QStringLiteral(KORVALITH_TEST_DATA_DIR "/exchange/") + GetParam();
    fault::exchange::StickFormat format;
    ASSERT_TRUE(fault::exchange::guessStickFormat(sticks, format));
    fault::exchange::StickSet expected;
    ASSERT_TRUE(fault::exchange::readSticks(sticks, format, expected));
    QStringList expectedLines;
    for (std::size_t f = 0; f < expected.faults.size(); ++f)
        expectedLines << QStringLiteral("fault %1 \"%2\": %3 sticks, %4 points")
                             .arg(f + 1).arg(expected.faults[f].name).arg(expected.faults[f].sticks.size())
                             .arg(expected.faults[f].pointCount());

    QTemporaryDir dir;
    const std::string set = dir.filePath("imported.faultset").toStdString();
    const Outcome im = runTool({"sticks", "import", sticks.toStdString(), set});
    ASSERT_EQ(im.code, 0) << im.err;
    const Outcome info = runTool({"info", set});
    ASSERT_EQ(info.code, 0) << info.err;
    EXPECT_EQ(lines(info.out).filter(QRegularExpression("^fault ")), expectedLines);
}

INSTANTIATE_TEST_SUITE_P(CommittedFiles, KfaultsImportsExchangeFiles,
                         ::testing::Values("charisma_fault_sticks.txt", "iesx_fault_sticks.txt",
                                           "opendtect_fault_sticks.txt", "gocad_pline_sticks.pl"));

TEST(Kfaults, DedupeFindsAndRemovesACopiedFault)
{
    core::MultiArray<core::vec3> rows(3);
    for (int f = 0; f < 3; ++f)
        for (int p = 0; p < 4; ++p)
            rows.addElement(f, core::vec3(10.0 + p + (f == 2 ? 50 : 0), 5.0 * p, 20.0 + p), false);
    ZNFaultPatchManager set(rows);   // faults 1 and 2 are the same, 3 is elsewhere
    QTemporaryDir dir;
    const std::string path = dir.filePath("set.faultset").toStdString();
    const std::string cleaned = dir.filePath("clean.faultset").toStdString();
    ASSERT_TRUE(set.writePickedFault(QString::fromStdString(path), false, nullptr, false));
    const Outcome d = runTool({"dedupe", path, "--remove", cleaned});
    ASSERT_EQ(d.code, 0) << d.err;
    EXPECT_NE(d.out.find("duplicate pairs: 1"), std::string::npos) << d.out;
    const Outcome info = runTool({"info", cleaned});
    EXPECT_NE(info.out.find("faults: 2"), std::string::npos) << info.out;
}

TEST(Kfaults, InfoDescribesBlockFiles)
{
    QTemporaryDir dir;
    const Outcome s = runTool({"synth", "--size", "16", "-o", dir.path().toStdString()});
    ASSERT_EQ(s.code, 0) << s.err;
    const Outcome info = runTool({"info", dir.filePath("planted_ids.bloc").toStdString()});
    ASSERT_EQ(info.code, 0) << info.err;
    EXPECT_NE(info.out.find("size: 16 x 16 x 16"), std::string::npos) << info.out;
    EXPECT_NE(info.out.find("axes: x inline, y crossline, z sample (samples stored x fastest, then y, then z)\n"),
              std::string::npos) << info.out;
    EXPECT_NE(info.out.find("sample type: int32"), std::string::npos) << info.out;
}

TEST(Kfaults, SynthSeismicThenLikelihoodWritesBlocksRawWithHeadersAndThePicture)
{
    QTemporaryDir dir;
    const Outcome synth = runTool({"synth", "--seismic", "--size", "40", "-o", dir.filePath("s").toStdString()});
    ASSERT_EQ(synth.code, 0) << synth.err;
    EXPECT_EQ(lines(synth.out).size(), 4);
    const QJsonArray planted = readJson(dir.filePath("s/planted_faults.json"))["faults"].toArray();
    ASSERT_GE(planted.size(), 3);
    for (const auto& f : planted) EXPECT_GT(f.toObject()["throw"].toDouble(), 0.0);

    const Outcome r = runTool({"likelihood", "-i", dir.filePath("s/seismic.bloc").toStdString(), "-o",
                               dir.filePath("out").toStdString()});
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_TRUE(r.err.empty());
    QStringList names;
    for (const QString& line : lines(r.out)) names << QFileInfo(line).fileName();
    names.sort();
    EXPECT_EQ(names, QStringList({"dip.bloc", "dip.float32.raw", "dip.float32.txt", "likelihood.bloc",
                                  "likelihood.float32.raw", "likelihood.float32.txt", "likelihood.png",
                                  "strike.bloc", "strike.float32.raw", "strike.float32.txt"}));
    ZNBloc likelihood;
    ZN3DImage<float> values;
    ASSERT_TRUE(likelihood.open(dir.filePath("out/likelihood.bloc")));
    ASSERT_TRUE(likelihood.readBox(0, 0, 0, 40, 40, 40, values));
    EXPECT_TRUE(std::all_of(values.data(), values.data() + values.voxelCount(), [](float v) { return v >= 0.0F && v <= 1.0F; }));
    QFile header(dir.filePath("out/strike.float32.txt"));
    ASSERT_TRUE(header.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(header.readAll());
    for (const char* field : {"file strike.float32.raw", "nInline 40", "nSample 40", "sampleType float32", "byteOrder little"})
        EXPECT_TRUE(text.contains(field)) << field;
    EXPECT_EQ(QFileInfo(dir.filePath("out/likelihood.float32.raw")).size(), 40 * 40 * 40 * 4);
    const QImage picture(dir.filePath("out/likelihood.png"));
    EXPECT_FALSE(picture.isNull());
}

TEST(Kfaults, LikelihoodRunsOnTheSegySamplesAndRefusesAMissingFile)
{
    QTemporaryDir dir;
    for (const char* sample : {"f3.sgy", "small.sgy"}) {
        const Outcome r = runTool({"likelihood", "-i", QDir(KORVALITH_SAMPLES_DIR).filePath(sample).toStdString(), "-o",
                                   dir.filePath(sample).toStdString()});
        EXPECT_EQ(r.code, 0) << sample << r.err;
        EXPECT_EQ(lines(r.out).size(), 10) << sample;
    }
    const Outcome missing = runTool({"likelihood", "-i", dir.filePath("none.sgy").toStdString()});
    EXPECT_EQ(missing.code, 1);
    EXPECT_EQ(lines(missing.err).size(), 1);
    EXPECT_TRUE(missing.out.empty());
}

// The samples are a shallow cut of a real survey and a tiny synthetic file: no fault
// to find in either, which is a result written like any other, said in one line.
TEST(Kfaults, ExtractFromSeismicOnTheSegySamplesWritesAnEmptyResultAndSaysWhy)
{
    QTemporaryDir dir;
    for (const char* sample : {"f3.sgy", "small.sgy"}) {
        SCOPED_TRACE(sample);
        const QString out = dir.filePath(sample);
        const Outcome r = runTool({"extract", "--from-seismic", "-i",
                                   QDir(KORVALITH_SAMPLES_DIR).filePath(sample).toStdString(), "-o", out.toStdString()});
        ASSERT_EQ(r.code, 0) << r.err;
        const QStringList printed = lines(r.out);
        ASSERT_FALSE(printed.isEmpty());
        EXPECT_TRUE(printed.last().endsWith("report.json"));
        const QStringList errors = lines(r.err);
        ASSERT_EQ(errors.size(), 1);
        EXPECT_TRUE(errors[0].startsWith("kfaults: no fault found: ")) << r.err;
        const QJsonObject report = readJson(QDir(out).filePath("report.json"));
        EXPECT_EQ(report["counts"].toObject()["faults"].toInt(-1), 0);
        EXPECT_EQ(report["faults"].toArray().size(), 0);
        EXPECT_EQ("kfaults: " + report["note"].toString(), errors[0]);
        ZNFaultPatchManager set;
        ASSERT_TRUE(set.readPickedFault(QDir(out).filePath("faults.faultset"), false, -1));
        EXPECT_TRUE(set.getFaultLightList().isEmpty());
    }
}

TEST(Kfaults, ExtractFromSeismicReportsItsInputAndThePlantedFaults)
{
    QTemporaryDir dir;
    const Outcome r = runTool({"extract", "--from-seismic", "--synthetic-size", "96", "--no-pictures", "-o",
                               dir.filePath("x").toStdString()});
    ASSERT_EQ(r.code, 0) << r.err;
    const QJsonObject report = readJson(dir.filePath("x/report.json"));
    EXPECT_TRUE(report["input"].toObject()["seismic"].toBool());
    EXPECT_TRUE(report["timingsMs"].toObject().contains("likelihood"));
    EXPECT_EQ(report["match"].toObject()["planted"].toArray().size(), 3);
}

TEST(Kfaults, ARawFilesByteOrderIsDetectedAndSaidAndAVolumeWithNothingAboveTheThresholdSaysSo)
{
    QTemporaryDir dir;
    const Outcome s = runTool({"synth", "--size", "40", "-o", dir.filePath("synth").toStdString()});
    ASSERT_EQ(s.code, 0) << s.err;
    // The synthetic volume as little-endian: the same samples, each reversed.
    QFile big(dir.filePath("synth/likelihood.float32.raw"));
    ASSERT_TRUE(big.open(QIODevice::ReadOnly));
    QByteArray bytes = big.readAll();
    for (int i = 0; i + 4 <= bytes.size(); i += 4) std::reverse(bytes.begin() + i, bytes.begin() + i + 4);
    const QString little = dir.filePath("little.raw"), zeros = dir.filePath("zeros.raw");
    for (const auto& [path, content] : {std::pair<QString, QByteArray>{little, bytes}, {zeros, QByteArray(40 * 40 * 40 * 4, '\0')}}) {
        QFile f(path);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(content);
    }
    struct Case {
        QString input;
        std::vector<std::string> byteOrder;
        int code;
        std::string err;           // all of stderr
        const char* reportOrder;   // byteOrder / byteOrderChosen in the report
        const char* chosen;
    };
    const std::string littlePath = little.toStdString();
    const std::string noSample = "kfaults: no fault found: no sample above 0.5 (values from 0 to 0): is this a "
                                 "likelihood volume, is the byte order right?\n";
    const Case cases[] = {
        {little, {}, 0, "kfaults: " + littlePath + ": samples read little-endian (detected; --byte-order sets it)\n",
         "little", "detected"},
        {little, {"--byte-order", "little"}, 0, "", "little", "given"},
        {zeros, {}, 0, noSample, nullptr, nullptr},
        {zeros, {"--byte-order", "little"}, 0, noSample, nullptr, nullptr},
    };
    for (const Case& c : cases) {
        std::vector<std::string> args{"extract", "--no-pictures", "-i", c.input.toStdString(), "--size", "40", "40",
                                      "40", "-o", dir.filePath("out").toStdString()};
        args.insert(args.end(), c.byteOrder.begin(), c.byteOrder.end());
        const Outcome r = runTool(args);
        EXPECT_EQ(r.code, c.code) << r.err;
        EXPECT_EQ(r.err, c.err);
        if (!c.reportOrder) continue;
        const QJsonObject input = readJson(dir.filePath("out/report.json"))["input"].toObject();
        EXPECT_EQ(input["byteOrder"].toString(), c.reportOrder);
        EXPECT_EQ(input["byteOrderChosen"].toString(), c.chosen);
        EXPECT_EQ(input["axisOrder"].toString(), "zyx");
        EXPECT_EQ(input["axes"].toObject()["x"].toString(), "inline");
    }
}
