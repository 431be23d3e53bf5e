// Fault set files. The committed files of tests/data/faultset are written by
// fuzz/faultset_corpus.cpp: a sample fault set in both forms and its broken variants.
#include <gtest/gtest.h>

#include <csignal>
#include <functional>

#include <QBuffer>
#include <QDir>
#include <QTemporaryDir>

#include <sys/resource.h>

#include <znbytesource.h>
#include <znfaultpatchmanager.h>
#include <znfilename.h>
#include <znobjectfile.h>

#include "faultsetfixtures.h"
#include "testfiles.h"
#include "testservices.h"

using namespace fixtures;

namespace {

const QString kData = QStringLiteral(KORVALITH_TEST_DATA_DIR "/faultset");
const QString kCannotRead = QStringLiteral("The fault set cannot be read");

QString sampleFile(bool twoD) { return kData + (twoD ? "/valid_2d.faultset" : "/valid_3d.faultset"); }

// Everything the file carries, for comparisons after a round trip.
struct FileState {
    State model;
    std::vector<geom::Rect2d> rects;
    std::vector<bool> twoD;
    QStringList descriptors;  // header text of each descriptor
    georef::BlocSpace space;
    georef::UnitObject units;

    static FileState of(const ZNFaultPatchManager& set)
    {
        FileState s{State::of(set), {}, {}, {}, set.getBlocSpace(), set.GetUnitObject()};
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
    // What the 3D form keeps: no flags, no rectangles, no 2D patches.
    FileState as3D() const
    {
        FileState s = *this;
        for (Points& points : s.model.points)
            for (core::PointWithBool& p : points) p.flag = false;
        s.rects.assign(rects.size(), geom::Rect2d());
        s.twoD.assign(twoD.size(), false);
        return s;
    }
    bool operator==(const FileState& o) const
    {
        return model == o.model && rects == o.rects && twoD == o.twoD &&
               descriptors == o.descriptors && space == o.space && units == o.units;
    }
};

bool readBytes(ZNFaultPatchManager& set, QByteArray bytes, bool twoD)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    ZNDeviceSource source(buffer);
    return set.readPickedFault(source, twoD, -1);
}

// The bytes of the file at `path` with the header's `key` set to `value`.
QByteArray withHeaderValue(const QString& path, const QString& key, const QString& value)
{
    QTemporaryDir dir;
    const QString copy = dir.filePath("f");
    ZNObjectFile::Header header;
    if (!QFile::copy(path, copy) || !ZNObjectFile::readHeader(copy, header)) return {};
    header.objectHeader.firstChildElement(key).setAttribute("value", value);
    return ZNObjectFile::rewriteHeader(copy, header.document) ? readFileBytes(copy) : QByteArray();
}

// A fault set unlike the sample, to read into.
void fillOther(ZNFaultPatchManager& set)
{
    set.init(7, true);
    append(set, 6, {P(1, 2, 3), S, P(4, 5, 6)});
    set.insertNewFaultLight(6);
}

// Limits the size of the files this process writes while it lives: a write beyond the
// limit fails as on a full disk (root included); its signal is ignored.
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

class FaultSetFileTest : public testing::TestWithParam<bool> {
protected:
    QString path() const { return m_dir.filePath("set.faultset"); }
    QTemporaryDir m_dir;
    RecordingEventBus m_bus;
    RecordingProcess m_process;
};

} // namespace

TEST_P(FaultSetFileTest, ARoundTripKeepsEveryFieldTheFormCarries)
{
    const bool twoD = GetParam();
    ZNFaultPatchManager sample;
    ASSERT_TRUE(sample.readPickedFault(sampleFile(true), true, -2));
    // Known values of the committed file: the reader decodes what the writer meant.
    EXPECT_EQ(*sample.getPickedPoint(1, 1), P(600012.5, 1300.0, 6100001.0, true));
    EXPECT_TRUE(sample.getPickedPoint(2, 2)->isSeparator());
    EXPECT_EQ(sample.getFaultPatch(3)->getRect(), geom::Rect2d(3, -1.5, 13.25, 3e-3));
    EXPECT_EQ(sample.getFather(2), 1);
    EXPECT_EQ(sample.findFaultLight(3)->GetFaultName(), "North");
    EXPECT_TRUE(sample.isWithMesh());  // and the file ends after the points

    RecordingProgress progress;
    ASSERT_TRUE(sample.writePickedFault(path(), twoD, nullptr, true));
    ZNFaultPatchManager read;
    fillOther(read);
    ASSERT_TRUE(read.readPickedFault(path(), twoD, -1));
    const FileState expected = FileState::of(sample);
    EXPECT_TRUE(FileState::of(read) == (twoD ? expected : expected.as3D()));
    EXPECT_TRUE(read.isValid());
    EXPECT_TRUE(read.getFaultLightList().first()->isSaved());
    EXPECT_EQ(progress.titles, QStringList({"Faults saving: Emergency Save", "Load Data", "Load Data"}));
    EXPECT_EQ(progress.closed, 3);
    EXPECT_TRUE(m_bus.contains(ZNEventBus::Progress, "Writing Picked Point core::Array..."));
    EXPECT_EQ(m_process.actions.last(),
              qMakePair(QStringLiteral("UPDATE_DISPLAY_CRS"), static_cast<ZNObject*>(&read)));
}

TEST_P(FaultSetFileTest, TheSmallestFaultSetWritesEightBytesOfFathersAndTwoEmptyPatches)
{
    const bool twoD = GetParam();
    ASSERT_TRUE(ZNFaultPatchManager().writePickedFault(path(), twoD, nullptr, false));
    const QByteArray data = readFileBytes(path()).mid(int(ZNObjectFile::getDataOffset(path())));
    EXPECT_EQ(data.size(), 8 + 2 * (4 + (twoD ? 32 : 0)));  // a rectangle per patch in 2D
    EXPECT_EQ(data.left(12), QByteArray::fromHex("000000000100000000000000"));
}

INSTANTIATE_TEST_SUITE_P(BothForms, FaultSetFileTest, testing::Bool());

TEST(FaultSetFile, TheHeaderListsItsKeysInOrder)
{
    ZNFaultPatchManager set(3);
    set.insertNewFaultLight(1);
    set.setPicked(false);
    QDomDocument doc;
    const QDomElement header = set.createHeader(doc);
    QStringList tags{header.tagName()};
    for (QDomElement e = header.firstChildElement(); !e.isNull(); e = e.nextSiblingElement())
        tags << e.tagName() + "=" + e.attribute("value");
    EXPECT_EQ(tags.mid(0, 3), QStringList({"ZNFaultPatchManager", "numberOfPatch=3", "Version=3"}));
    EXPECT_EQ(tags.mid(7), QStringList({"picked=0", "withMesh=1", "unitsObject=", "ZN3DFaultPatchLight=",
                                        "ZNFaultPatch=", "ZNFaultPatch=", "ZNFaultPatch="}));
}

TEST(FaultSetFile, OlderVersionsAreReadInThe3DFormWhateverTheCallerAsks)
{
    RecordingEventBus bus;
    ZNFaultPatchManager sample;
    ASSERT_TRUE(sample.readPickedFault(sampleFile(false), false, -2));
    for (const char* version : {"1", "2"}) {
        ZNFaultPatchManager read;
        ASSERT_TRUE(readBytes(read, withHeaderValue(sampleFile(false), "Version", version), true));
        EXPECT_TRUE(FileState::of(read) == FileState::of(sample)) << version;
    }
    // Version 0 holds block indices: the points come through the block-to-world matrix.
    ZNFaultPatchManager read;
    ASSERT_TRUE(readBytes(read, withHeaderValue(sampleFile(false), "Version", "0"), false));
    const core::PointWithBool& p = *sample.getPickedPoint(1, 0);
    EXPECT_EQ(*read.getPickedPoint(1, 0), core::PointWithBool(sample.getBlocSpace().blocToWorld(p.position())));
    EXPECT_TRUE(read.getPickedPoint(1, 2)->isSeparator());
}

TEST(FaultSetFile, EveryCommittedBrokenFileIsRefusedAndChangesNothing)
{
    const QStringList names = QDir(kData + "/corrupt").entryList(QDir::Files);
    EXPECT_EQ(names.size(), 32);
    for (const QString& name : names) {
        SCOPED_TRACE(name.toStdString());
        const QByteArray bytes = readFileBytes(kData + "/corrupt/" + name);
        const bool twoD = !name.startsWith("3d_");
        for (const bool form : {twoD, !twoD}) {
            RecordingEventBus bus;
            ZNFaultPatchManager set;
            fillOther(set);
            const FileState before = FileState::of(set);
            const bool read = readBytes(set, bytes, form);
            EXPECT_TRUE(set.isValid());
            if (form != twoD) continue;  // read in the other form: only no harm is asked
            EXPECT_FALSE(read);
            EXPECT_TRUE(bus.contains(ZNEventBus::Error, kCannotRead));
            EXPECT_TRUE(FileState::of(set) == before);
        }
    }
}

TEST(FaultSetFile, ACancelledReadChangesNothing)
{
    RecordingProgress progress(1);
    ZNFaultPatchManager set;
    fillOther(set);
    const FileState before = FileState::of(set);
    EXPECT_FALSE(set.readPickedFault(sampleFile(true), true, -1));
    EXPECT_TRUE(FileState::of(set) == before);
    EXPECT_EQ(progress.closed, progress.titles.size());
}

TEST(FaultSetFile, AnInterruptedOrCancelledSaveLeavesTheOldFileAsItWas)
{
    QTemporaryDir dir;
    const QString target = dir.filePath("set.faultset");
    ASSERT_TRUE(QFile::copy(sampleFile(true), target));
    const QByteArray oldBytes = readFileBytes(target);
    ZNFaultPatchManager large(3);
    for (int k = 0; k < 10000; ++k) large.addPickedPoint(1, P(k, 2.0 * k, 3.0 * k));
    const qint64 headerBytes = 20000;  // global header, header and reserve fit in it

    const QList<QPair<QString, std::function<bool()>>> saves = {
        {"write failure", [&] {
             FileSizeLimit limit(static_cast<rlim_t>(headerBytes + 1000));
             return large.writePickedFault(target, true, nullptr, false);
         }},
        {"cancel", [&] {
             RecordingProgress progress(1);
             return large.writePickedFault(target, true, nullptr, true);
         }},
    };
    for (const auto& save : saves) {
        SCOPED_TRACE(save.first.toStdString());
        RecordingEventBus bus;
        EXPECT_FALSE(save.second());
        EXPECT_EQ(bus.contains(ZNEventBus::Error, "File write error while writing fault picked point data"),
                  save.first == "write failure");  // a cancel is no error
        EXPECT_EQ(readFileBytes(target), oldBytes);
        EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList{"set.faultset"});
    }
}

TEST(FaultSetFile, ASaveIsRefusedWhileAFaultNameCannotNameAFile)
{
    QTemporaryDir dir;
    ZNFaultPatchManager set(3);
    set.insertNewFaultLight(1)->SetFaultName("exports/North.v2");
    RecordingMessageBox boxes;
    EXPECT_TRUE(set.checkFaultNames());
    for (const char* name : {"A:B", "", "CON", "tab\tname"}) {
        set.insertNewFaultLight(2)->SetFaultName(name);
        EXPECT_FALSE(set.writePickedFault(dir.filePath("set"), true, nullptr, false)) << name;
        set.removeFaultLight(2);
    }
    EXPECT_FALSE(QFile::exists(dir.filePath("set")));
    ASSERT_EQ(boxes.shown.size(), 4);
    EXPECT_EQ(boxes.shown[0].title, "Error");
    EXPECT_EQ(boxes.shown[0].text, "Fault named " + ZNFileName::describeProblem("A:B") +
                                       "<br>Operation aborted. Try again after renaming the fault.");
}
