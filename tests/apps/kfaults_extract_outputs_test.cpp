#include <gtest/gtest.h>

#include <map>

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QTemporaryDir>
#include <QtEndian>

#include <znbloc.h>

#include <znfaultpatchmanager.h>

#include <commandline.h>
#include <extractjob.h>
#include <outputfolder.h>

#include "kfaultstesthelpers.h"

// The output folder of `kfaults extract`: a folder holding report.json holds exactly the
// outputs of that run, whatever stopped an earlier one, and errors name the user's paths.
namespace {

using Snapshot = std::map<QString, QByteArray>;  // file name -> bytes

Snapshot snapshot(const QString& folder)
{
    Snapshot s;
    const QDir dir(folder);
    for (const QString& name : dir.entryList(QDir::Files | QDir::Hidden)) {
        QFile f(dir.filePath(name));
        s[name] = f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }
    return s;
}

void restore(const Snapshot& s, const QString& folder)
{
    QDir(folder).removeRecursively();
    ASSERT_TRUE(QDir().mkpath(folder));
    for (const auto& [name, bytes] : s) {
        QFile f(QDir(folder).filePath(name));
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(bytes);
    }
}

QStringList stagingFolders(const QString& folder)
{
    return QDir(folder).entryList({QLatin1String(kfaults::OutputFolder::kStagingPrefix) + QLatin1Char('*')},
                                  QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot);
}

kfaults::ExtractOptions smallRun(const QString& folder, std::uint64_t seed, bool pictures)
{
    kfaults::ExtractOptions o;
    o.syntheticSize = 32;
    o.seed = seed;
    o.pictures = pictures;
    o.unfoldedPictures = 2;
    o.outputDir = folder;
    return o;
}

} // namespace

TEST(KfaultsExtractOutputs, AStopAnywhereInTheFinalMoveNeverLeavesAReportBesideOtherOutputs)
{
    QTemporaryDir dir;
    const QString folder = dir.filePath(QStringLiteral("out"));
    // The earlier run: pictures included. The new run: another volume, no pictures, so
    // the earlier pictures are stale outputs.
    ASSERT_TRUE(kfaults::runExtract(smallRun(folder, 1, true)).ok());
    const Snapshot earlier = snapshot(folder);
    ASSERT_TRUE(earlier.count("map_view.png") && earlier.count("report.json"));
    const QString reference = dir.filePath(QStringLiteral("reference"));
    const kfaults::ExtractResult fresh = kfaults::runExtract(smallRun(reference, 2, false));
    ASSERT_TRUE(fresh.ok());
    const int files = fresh.files.size();
    const int steps = 1 + (files - 1) + 1 + 1;  // withdraw, moves, stale outputs, report

    for (int k = 0; k < steps; ++k) {
        SCOPED_TRACE(k);
        ASSERT_NO_FATAL_FAILURE(restore(earlier, folder));
        kfaults::ExtractOptions stopped = smallRun(folder, 2, false);
        stopped.testStopAfterMoves = k;
        EXPECT_FALSE(kfaults::runExtract(stopped).ok());
        // As after kill -9: the staging folder stays, the fault set is never lost.
        EXPECT_EQ(stagingFolders(folder).size(), 1);
        ZNFaultPatchManager set;
        EXPECT_TRUE(set.readPickedFault(QDir(folder).filePath("faults.faultset"), false, -2));
        if (k == 0)
            EXPECT_TRUE(snapshot(folder) == earlier);  // nothing moved yet
        else
            EXPECT_FALSE(QFile::exists(QDir(folder).filePath("report.json")));

        // The next run completes: its own outputs only, no staging folder left.
        const kfaults::ExtractResult again = kfaults::runExtract(smallRun(folder, 2, false));
        ASSERT_TRUE(again.ok()) << again.error.toStdString();
        EXPECT_TRUE(again.files.last().endsWith("report.json"));
        QStringList names;
        for (const QString& f : again.files) names << QFileInfo(f).fileName();
        names.sort();
        EXPECT_EQ(QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot), names);
    }
}

TEST(KfaultsExtractOutputs, ASecondRunRemovesTheUnfoldedPicturesOfFaultsItDidNotDraw)
{
    QTemporaryDir dir;
    const QString folder = dir.filePath(QStringLiteral("out"));
    ASSERT_TRUE(kfaults::runExtract(smallRun(folder, 1, true)).ok());
    kfaults::ExtractOptions fewer = smallRun(folder, 1, true);
    fewer.unfoldedPictures = 0;
    const kfaults::ExtractResult r = kfaults::runExtract(fewer);
    ASSERT_TRUE(r.ok());
    EXPECT_TRUE(QDir(folder).entryList({"unfolded_fault_*.png"}, QDir::Files).isEmpty());
    EXPECT_EQ(QDir(folder).entryList(QDir::Files | QDir::Hidden).size(), r.files.size());
}

TEST(KfaultsExtractOutputs, AStagingFolderOfARunStillGoingIsLeftAlone)
{
    QTemporaryDir dir;
    const QString folder = dir.filePath(QStringLiteral("out"));
    kfaults::OutputFolder running(folder);
    ASSERT_TRUE(running.prepare());
    ASSERT_TRUE(kfaults::runExtract(smallRun(folder, 1, false)).ok());
    EXPECT_TRUE(QDir(running.stagingPath()).exists());
    EXPECT_EQ(stagingFolders(folder).size(), 1);
}

TEST(KfaultsExtractOutputs, ARefusedWriteNamesTheOutputFolderAndTheSystemsReason)
{
    QTemporaryDir dir;
    const QString folder = dir.filePath(QStringLiteral("out"));
    ASSERT_TRUE(kfaults::runExtract(smallRun(folder, 1, false)).ok());
    const Snapshot earlier = snapshot(folder);
    kfaults::ExtractResult r;
    {
        kfaultstest::FileSizeLimit limit(4096);
        ASSERT_TRUE(limit.isSet());
        r = kfaults::runExtract(smallRun(folder, 2, false));
    }
    EXPECT_FALSE(r.ok());
    EXPECT_TRUE(r.error.startsWith(folder + "/")) << r.error.toStdString();
    EXPECT_TRUE(r.error.contains("File too large")) << r.error.toStdString();
    EXPECT_FALSE(r.error.contains(kfaults::OutputFolder::kStagingPrefix)) << r.error.toStdString();
    EXPECT_TRUE(snapshot(folder) == earlier);
    EXPECT_TRUE(stagingFolders(folder).isEmpty());
}

TEST(KfaultsExtractOutputs, AFolderGivenAsInputIsNamedForWhatItIs)
{
    QTemporaryDir dir;
    const kfaultstest::Outcome r =
        kfaultstest::runTool({"extract", "-i", dir.path().toStdString(), "--format", "bloc", "-o", "@out"}, dir.path());
    EXPECT_EQ(r.code, kfaults::kExitFailure);
    EXPECT_EQ(r.err, "kfaults: " + dir.path().toStdString() + ": a folder, not a volume file\n");
}

TEST(KfaultsExtractOutputs, TheFaultVolumeIsWrittenOnceInTheFormAskedForAndHoldsEveryFaultsVoxels)
{
    using kfaults::FaultVolumeForm;
    struct Case {
        FaultVolumeForm form;
        QStringList files;  // of the fault volume
    };
    const Case cases[] = {
        {FaultVolumeForm::Both, {"fault_volume.bloc", "fault_volume.int32.raw", "fault_volume.int32.txt"}},
        {FaultVolumeForm::Bloc, {"fault_volume.bloc"}},
        {FaultVolumeForm::Raw, {"fault_volume.int32.raw", "fault_volume.int32.txt"}},
    };
    QTemporaryDir dir;
    const QString folder = dir.filePath(QStringLiteral("out"));
    for (const Case& c : cases) {  // one after the other into the same folder
        kfaults::ExtractOptions o = smallRun(folder, 1, false);
        o.faultVolume = c.form;
        const kfaults::ExtractResult r = kfaults::runExtract(o);
        ASSERT_TRUE(r.ok()) << r.error.toStdString();
        EXPECT_EQ(QDir(folder).entryList({"fault_volume*"}, QDir::Files), c.files);

        // Both forms hold the same labels, x fastest; each reported fault has as many
        // voxels there as the report gives it.
        std::vector<int> labels;
        if (c.form != FaultVolumeForm::Raw) {
            ZNBloc bloc;
            ZN3DImage<int> volume;
            ASSERT_TRUE(bloc.open(QDir(folder).filePath("fault_volume.bloc")));
            ASSERT_TRUE(bloc.readBox(0, 0, 0, 32, 32, 32, volume));
            labels.assign(volume.data(), volume.data() + volume.voxelCount());
        }
        if (c.form != FaultVolumeForm::Bloc) {
            QFile raw(QDir(folder).filePath("fault_volume.int32.raw"));
            ASSERT_TRUE(raw.open(QIODevice::ReadOnly));
            const QByteArray bytes = raw.readAll();
            ASSERT_EQ(bytes.size(), 32 * 32 * 32 * 4);
            std::vector<int> rawLabels(32 * 32 * 32);
            for (std::size_t i = 0; i < rawLabels.size(); ++i)
                rawLabels[i] = qFromLittleEndian<qint32>(bytes.constData() + 4 * i);
            if (!labels.empty()) {
                EXPECT_EQ(rawLabels, labels);
            }
            labels = rawLabels;
            QFile header(QDir(folder).filePath("fault_volume.int32.txt"));
            ASSERT_TRUE(header.open(QIODevice::ReadOnly));
            const QString text = QString::fromUtf8(header.readAll());
            EXPECT_TRUE(text.contains("axisOrder xyz\n") && text.contains("byteOrder little\n")) << text.toStdString();
        }
        std::map<int, int> voxels;
        for (int id : labels) ++voxels[id];
        const QJsonArray faults = r.report["faults"].toArray();
        ASSERT_FALSE(faults.isEmpty());
        for (const QJsonValue& f : faults)
            EXPECT_EQ(voxels[f.toObject()["id"].toInt()], f.toObject()["voxelCount"].toInt());
    }
}
