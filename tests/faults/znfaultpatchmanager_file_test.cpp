#include <gtest/gtest.h>

#include <csignal>
#include <functional>

#include <QBuffer>
#include <QDir>
#include <QTemporaryDir>

#include <sys/resource.h>

#include <znbytesource.h>
#include <znfilename.h>
#include <znfaultpatchmanager.h>
#include <znobjectfile.h>

#include "faultsetcorpus.h"
#include "faultsetfixtures.h"
#include "testfiles.h"
#include "testservices.h"

using namespace fixtures;

namespace {

const QString kCannotRead = QStringLiteral("The fault set cannot be read");

// Everything the file carries, for comparisons after a round trip.
struct FileState {
    State model;
    std::vector<geom::Rect2d> rects;
    std::vector<bool> twoD;
    QStringList descriptors;  // header text of each descriptor
    georef::BlocSpace space;
    georef::UnitObject units;
    bool picked = true;

    static FileState of(const ZNFaultPatchManager& set)
    {
        FileState s{State::of(set), {}, {}, {}, set.getBlocSpace(), set.GetUnitObject(), set.isPicked()};
        for (int i = 0; i < set.getNumberOfPatch(); ++i) {
            s.rects.push_back(set.getFaultPatch(i)->getRect());
            s.twoD.push_back(set.getFaultPatch(i)->is2dFaultPatch());
        }
        for (const ZN3DFaultPatchLight* light : set.getFaultLightList()) {
            QDomDocument doc;
            doc.appendChild(light->createHeader(doc));
            s.descriptors << doc.toString();
        }
        return s;
    }
    // What the 3D form keeps of this state: no flags, no rectangles, no 2D patches.
    FileState as3D() const
    {
        FileState s = *this;
        for (Points& points : s.model.points)
            for (core::PointWithBool& p : points) p.flag = false;
        for (geom::Rect2d& r : s.rects) r = geom::Rect2d();
        for (size_t i = 0; i < s.twoD.size(); ++i) s.twoD[i] = false;
        return s;
    }
    bool operator==(const FileState& o) const
    {
        return model == o.model && rects == o.rects && twoD == o.twoD &&
               descriptors == o.descriptors && space == o.space && units == o.units &&
               picked == o.picked;
    }
};

bool readBytes(ZNFaultPatchManager& set, QByteArray bytes, bool twoD, int progress = -1)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    ZNDeviceSource source(buffer);
    return set.readPickedFault(source, twoD, progress);
}

qint64 dataOffsetOf(const QString& path) { return ZNObjectFile::getDataOffset(path); }

// A fault set unlike the sample, to read into.
void fillOther(ZNFaultPatchManager& set)
{
    set.init(7, true);
    append(set, 6, {P(1, 2, 3), S, P(4, 5, 6)});
    set.insertNewFaultLight(6);
}

// A patch of `count` points, enough to make a save last beyond a file size limit.
void fillLarge(ZNFaultPatchManager& set, int count)
{
    set.init(3, true);
    for (int k = 0; k < count; ++k) set.addPickedPoint(1, P(k, 2.0 * k, 3.0 * k));
}

// Limits the size of the files this process writes while it lives: a write beyond the
// limit fails as it does on a full disk (even for root), and its signal is ignored.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &m_old);
        rlimit limit = m_old;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_old);
        std::signal(SIGXFSZ, m_handler);
    }

private:
    rlimit m_old{};
    void (*m_handler)(int);
};

// A device that accepts `budget` bytes and then fails every write.
class FailingDevice : public QIODevice {
public:
    explicit FailingDevice(qint64 budget) : m_budget(budget) { open(QIODevice::WriteOnly); }

protected:
    qint64 readData(char*, qint64) override { return -1; }
    qint64 writeData(const char*, qint64 len) override
    {
        if (len > m_budget) return -1;
        m_budget -= len;
        return len;
    }

private:
    qint64 m_budget;
};

class FaultSetFileTest : public testing::TestWithParam<bool> {
protected:
    QString path(const QString& name = QStringLiteral("set.faultset")) const { return m_dir.filePath(name); }
    QTemporaryDir m_dir;
    RecordingEventBus m_bus;
    RecordingProcess m_process;
};

} // namespace

// ----- round trips -----

TEST_P(FaultSetFileTest, ARoundTripKeepsEveryFieldTheFormCarries)
{
    const bool twoD = GetParam();
    ZNFaultPatchManager original;
    faultsetcorpus::fill(original, twoD);
    RecordingProgress progress;
    ASSERT_TRUE(original.writePickedFault(path(), twoD, nullptr, true));
    EXPECT_TRUE(progress.titles.contains("Faults saving: Emergency Save"));
    EXPECT_TRUE(m_bus.contains(ZNEventBus::Progress, "Writing Picked Point core::Array..."));

    ZNFaultPatchManager read;
    fillOther(read);
    ASSERT_TRUE(read.readPickedFault(path(), twoD, -1));
    const FileState expected = FileState::of(original);
    EXPECT_TRUE(FileState::of(read) == (twoD ? expected : expected.as3D()));
    // The file says meshes follow, but none were given: it ends after the points.
    EXPECT_TRUE(read.isWithMesh());
    EXPECT_TRUE(read.isValid());
    EXPECT_TRUE(read.getFaultLightList().first()->isSaved());
    EXPECT_TRUE(progress.titles.contains("Load Data"));
    EXPECT_EQ(progress.closed, progress.titles.size());
    ASSERT_FALSE(m_process.actions.isEmpty());
    EXPECT_EQ(m_process.actions.last(), qMakePair(QStringLiteral("UPDATE_DISPLAY_CRS"),
                                                  static_cast<ZNObject*>(&read)));
}

TEST_P(FaultSetFileTest, TheSmallestFaultSetWritesEightBytesOfFathersAndTwoEmptyPatches)
{
    const bool twoD = GetParam();
    ZNFaultPatchManager smallest;
    ASSERT_TRUE(smallest.writePickedFault(path(), twoD, nullptr, false));
    const QByteArray data = readFileBytes(path()).mid(int(dataOffsetOf(path())));
    // Fathers 0 and 1, then per patch a count of 0 (and its rectangle in the 2D form).
    EXPECT_EQ(data.size(), 8 + 2 * (4 + (twoD ? 32 : 0)));
    EXPECT_EQ(data.left(12), QByteArray::fromHex("000000000100000000000000"));
}

INSTANTIATE_TEST_SUITE_P(BothForms, FaultSetFileTest, testing::Values(true, false),
                         [](const testing::TestParamInfo<bool>& info) {
                             return info.param ? "TwoD" : "ThreeD";
                         });

TEST(FaultSetFile, TheHeaderListsItsKeysInOrder)
{
    ZNFaultPatchManager set;
    faultsetcorpus::fill(set, true);
    set.setPicked(false);
    QDomDocument doc;
    const QDomElement header = set.createHeader(doc);
    EXPECT_EQ(header.tagName(), "ZNFaultPatchManager");
    QStringList tags;
    for (QDomElement e = header.firstChildElement(); !e.isNull(); e = e.nextSiblingElement())
        tags << e.tagName();
    QStringList expected = {"numberOfPatch", "Version", "dimx", "dimy", "dimz",
                            "fromBlocToWorldMatrix", "picked", "withMesh", "unitsObject",
                            "ZN3DFaultPatchLight", "ZN3DFaultPatchLight"};
    for (int i = 0; i < set.getNumberOfPatch(); ++i) expected << "ZNFaultPatch";
    EXPECT_EQ(tags, expected);
    EXPECT_EQ(header.firstChildElement("Version").attribute("value"), "3");
}

TEST(FaultSetFile, OlderVersionsAreReadInThe3DFormWhateverTheCallerAsks)
{
    RecordingEventBus bus;
    ZNFaultPatchManager original;
    faultsetcorpus::fill(original, false);
    const QByteArray file3D = faultsetcorpus::fileOf(original, false);
    const FileState expected = FileState::of(original).as3D();
    for (const char* version : {"1", "2"}) {
        SCOPED_TRACE(version);
        ZNFaultPatchManager read;
        ASSERT_TRUE(readBytes(read, faultsetcorpus::withHeaderValue(file3D, "Version", version), true));
        EXPECT_TRUE(FileState::of(read) == expected);
        EXPECT_EQ(read.getVersion(), QString(version).toInt());
    }

    // Version 0 holds block indices: the points come back through the block-to-world matrix.
    ZNFaultPatchManager read;
    ASSERT_TRUE(readBytes(read, faultsetcorpus::withHeaderValue(file3D, "Version", "0"), false));
    const georef::BlocSpace& space = original.getBlocSpace();
    for (int id = 1; id < original.getNumberOfPatch(); ++id)
        for (int k = 0; k < original.getNumberOfPickedPoint(id); ++k) {
            const core::PointWithBool& p = *original.getPickedPoint(id, k);
            const core::PointWithBool world = p.isSeparator() ? p : core::PointWithBool(space.blocToWorld(p.position()));
            EXPECT_EQ(*read.getPickedPoint(id, k), world) << id << ":" << k;
        }
}

// ----- hostile input -----

TEST(FaultSetFile, EveryCommittedBrokenFileIsRefusedAndChangesNothing)
{
    const QString directory = faultsetcorpus::committedDirectory();
    if (qEnvironmentVariableIsSet("KORVALITH_REGENERATE_CORPUS")) {
        ASSERT_TRUE(faultsetcorpus::regenerate(directory));
    }
    const QStringList names = QDir(directory + "/corrupt").entryList(QDir::Files);
    EXPECT_EQ(names.size(), faultsetcorpus::brokenFiles().size());
    for (const QString& name : names) {
        SCOPED_TRACE(name.toStdString());
        const QByteArray bytes = readFileBytes(directory + "/corrupt/" + name);
        const bool twoD = !name.startsWith("3d_");
        for (const bool form : {twoD, !twoD}) {
            RecordingEventBus bus;
            ZNFaultPatchManager set;
            faultsetcorpus::fill(set, true);
            const FileState before = FileState::of(set);
            const bool read = readBytes(set, bytes, form);
            EXPECT_TRUE(set.isValid());
            if (form != twoD) continue;  // read in the other form: only no harm is asked
            EXPECT_FALSE(read);
            EXPECT_TRUE(bus.contains(ZNEventBus::Error, kCannotRead));
            EXPECT_TRUE(FileState::of(set) == before);
        }
    }
    for (const bool twoD : {true, false}) {
        ZNFaultPatchManager set;
        EXPECT_TRUE(set.readPickedFault(directory + (twoD ? "/valid_2d.faultset" : "/valid_3d.faultset"), twoD, -2));
        EXPECT_EQ(set.getNumberOfPickedPoint(1), 5);
    }
}

TEST(FaultSetFile, ADataReadThatFailsMidwayKeepsWhatWasReadAndStaysConsistent)
{
    RecordingEventBus bus;
    ZNFaultPatchManager original;
    faultsetcorpus::fill(original, true);
    const QByteArray bytes = faultsetcorpus::fileOf(original, true);
    QByteArray cut = bytes.left(bytes.size() - 40);  // inside patch 3
    QBuffer buffer(&cut);
    buffer.open(QIODevice::ReadOnly);
    ZNDeviceSource source(buffer);
    ZNObjectFile::Header header;
    ASSERT_TRUE(ZNObjectFile::readHeader(source, header));

    ZNFaultPatchManager set;
    ASSERT_TRUE(set.getPickedFaultHeader(&header.objectHeader, -2));
    EXPECT_FALSE(set.readPickedFaultData(source, header.dataOffset, true, -2));
    EXPECT_TRUE(bus.contains(ZNEventBus::Error, kCannotRead));
    EXPECT_EQ(pointsOf(set, 1), pointsOf(original, 1));
    EXPECT_EQ(set.getFather(2), 1);
    EXPECT_TRUE(set.isValid());
}

TEST(FaultSetFile, ACancelledReadChangesNothing)
{
    ZNFaultPatchManager original;
    faultsetcorpus::fill(original, true);
    const QByteArray bytes = faultsetcorpus::fileOf(original, true);
    RecordingProgress progress(1);
    ZNFaultPatchManager set;
    fillOther(set);
    const FileState before = FileState::of(set);
    EXPECT_FALSE(readBytes(set, bytes, true));
    EXPECT_TRUE(FileState::of(set) == before);
    EXPECT_EQ(progress.closed, progress.titles.size());
}

// ----- saving -----

TEST(FaultSetFile, AWriteFailureOnTheDeviceIsReported)
{
    ZNFaultPatchManager set;
    faultsetcorpus::fill(set, true);
    for (const qint64 budget : {0, 10, 100}) {
        RecordingEventBus bus;
        FailingDevice device(budget);
        EXPECT_FALSE(set.writePickedFaultData(device, 0, true, nullptr, false)) << budget;
        EXPECT_TRUE(bus.contains(ZNEventBus::Error,
                                 "File write error while writing fault picked point data"));
    }
}

TEST(FaultSetFile, AnInterruptedOrCancelledSaveLeavesTheOldFileAsItWas)
{
    QTemporaryDir dir;
    const QString target = dir.filePath("set.faultset");
    ZNFaultPatchManager old;
    faultsetcorpus::fill(old, true);
    ASSERT_TRUE(old.writePickedFault(target, true, nullptr, false));
    const QByteArray oldBytes = readFileBytes(target);

    ZNFaultPatchManager large;
    fillLarge(large, 10000);
    ASSERT_TRUE(large.writePickedFault(dir.filePath("probe"), true, nullptr, false));
    const qint64 dataOffset = dataOffsetOf(dir.filePath("probe"));
    QFile::remove(dir.filePath("probe"));

    const QList<QPair<const char*, std::function<bool()>>> saves = {
        {"write failure", [&] {
             FileSizeLimit limit(static_cast<rlim_t>(dataOffset + 1000));
             return large.writePickedFault(target, true, nullptr, false);
         }},
        {"cancel", [&] {
             RecordingProgress progress(1);
             return large.writePickedFault(target, true, nullptr, true);
         }},
    };
    for (const auto& save : saves) {
        SCOPED_TRACE(save.first);
        RecordingEventBus bus;
        EXPECT_FALSE(save.second());
        // A cancel is no error; a failed write says so.
        EXPECT_EQ(bus.contains(ZNEventBus::Error, "File write error while writing fault picked point data"),
                  QString(save.first) == "write failure");
        EXPECT_EQ(readFileBytes(target), oldBytes);
        EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList{"set.faultset"});
        ZNFaultPatchManager read;
        EXPECT_TRUE(read.readPickedFault(target, true, -2));
        EXPECT_TRUE(FileState::of(read) == FileState::of(old));
    }
}

TEST(FaultSetFile, ASaveIsRefusedWhileAFaultNameCannotNameAFile)
{
    QTemporaryDir dir;
    for (const char* name : {"A:B", "", "CON", "trailing.", "tab\tname"}) {
        SCOPED_TRACE(name);
        RecordingMessageBox boxes;
        ZNFaultPatchManager set;
        faultsetcorpus::fill(set, true);
        set.getFaultLightList().last()->SetFaultName(name);
        EXPECT_FALSE(set.writePickedFault(dir.filePath("set"), true, nullptr, false));
        EXPECT_FALSE(QFile::exists(dir.filePath("set")));
        ASSERT_EQ(boxes.shown.size(), 1);
        EXPECT_EQ(boxes.shown[0].title, "Error");
        EXPECT_EQ(boxes.shown[0].text, "Fault named " + ZNFileName::describeProblem(name) +
                                           "<br>Operation aborted. Try again after renaming the fault.");
    }
    RecordingMessageBox boxes;
    ZNFaultPatchManager set;
    faultsetcorpus::fill(set, true);
    set.getFaultLightList().last()->SetFaultName("exports/North.v2");
    EXPECT_TRUE(set.checkFaultNames());
    EXPECT_TRUE(boxes.shown.isEmpty());
}
