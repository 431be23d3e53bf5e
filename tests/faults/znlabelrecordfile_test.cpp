#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include <QFile>
#include <QTemporaryDir>

#include <core/conventions.h>
#include <znlabelrecordfile.h>
#include <znlabelslabreader.h>

namespace {

using Record = ZNLabelRecordFile::Record;

// nx x ny x nz labels: a share `density` of the voxels labelled 1 .. 50, the others a
// value below 1 as a segmentation leaves them (no value, a scan mark, zero).
ZN3DImage<int> randomLabels(int nx, int ny, int nz, double density, unsigned seed)
{
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> share(0.0, 1.0);
    std::uniform_int_distribution<int> label(1, 50);
    const int outside[] = {core::kNoValue, core::kNoValue + 1, 0};
    ZN3DImage<int> image(georef::BlocSpace(nx, ny, nz), 0);
    for (std::size_t i = 0; i < image.voxelCount(); ++i)
        image.data()[i] = share(rng) < density ? label(rng) : outside[i % 3];
    return image;
}

long long labelledIn(const ZN3DImage<int>& image, int z0, int count)
{
    long long n = 0;
    for (int z = z0; z < z0 + count; ++z)
        for (std::size_t i = 0; i < image.sliceSize(); ++i) n += image.slice(z)[i] >= 1;
    return n;
}

// Voxels of slice z read from `reader` that differ from `image` (below 1 there: no value).
int differences(const ZNLabelSlabReader& reader, const ZN3DImage<int>& image, int z)
{
    const int* read = reader.slice(z);
    if (!read) return -1;
    int wrong = 0;
    for (std::size_t i = 0; i < image.sliceSize(); ++i) {
        const int expected = image.slice(z)[i] >= 1 ? image.slice(z)[i] : core::kNoValue;
        wrong += read[i] != expected;
    }
    return wrong;
}

class LabelRecordFile : public testing::Test {
protected:
    QTemporaryDir dir;
    QString path(const char* name = "labels.records") const { return dir.filePath(QLatin1String(name)); }

    // Writes `image` to `file` in runs of `run` slices and finishes it.
    static bool write(ZNLabelRecordFile& file, const QString& at, const ZN3DImage<int>& image, int run)
    {
        if (!file.create(at, image.blocSpace())) return false;
        for (int z = 0; z < image.nz(); z += run)
            if (!file.appendSlices(image.slice(z), std::min(run, image.nz() - z))) return false;
        return file.finish();
    }
};

} // namespace

TEST_F(LabelRecordFile, SlabsReadBackHoldTheLabelsOfEverySliceAndNothingOfTheSlabBefore)
{
    // Dense labels overflow what a slab remembers of the samples it set, sparse ones do
    // not: both must leave no label of one slab in the next.
    struct Case {
        const char* name;
        double density;
        int run;        // slices appended at once
        int slabDepth;
    };
    const Case cases[] = {
        {"no label", 0.0, 4, 2},
        {"sparse, slice by slice", 0.01, 1, 2},
        {"sparse, one slab", 0.02, 9, 9},
        {"a third labelled", 0.3, 3, 4},
        {"every voxel labelled", 1.0, 2, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const ZN3DImage<int> image = randomLabels(37, 23, 9, c.density, 7);
        ZNLabelRecordFile file;
        ASSERT_TRUE(write(file, path(), image, c.run));
        EXPECT_EQ(QFile(path()).size(), labelledIn(image, 0, 9) * static_cast<qint64>(sizeof(Record)));
        EXPECT_EQ(file.recordCount(0, 9), labelledIn(image, 0, 9));
        EXPECT_EQ(file.recordCount(3, 2), labelledIn(image, 3, 2));
        EXPECT_EQ(file.recordCount(7, 100), labelledIn(image, 7, 2));
        ZNLabelSlabReader reader(&file, c.slabDepth);
        ASSERT_TRUE(reader.isUsable());
        EXPECT_EQ(reader.blocSpace(), image.blocSpace());
        // Forwards, then backwards, then slabs one slice deeper, as the contact pass asks.
        std::vector<int> starts;
        for (int z = 0; z < 9; z += c.slabDepth) starts.push_back(z);
        for (int z = 8; z >= 0; z -= c.slabDepth) starts.push_back(z);
        for (const int deeper : {0, 1})
            for (const int z0 : starts) {
                ASSERT_TRUE(reader.load(z0, c.slabDepth + deeper)) << z0;
                const int end = std::min(9, z0 + c.slabDepth + deeper);
                for (int z = z0; z < end; ++z) EXPECT_EQ(differences(reader, image, z), 0) << "slice " << z;
                if (end < 9) {
                    EXPECT_EQ(reader.slice(end), nullptr);
                }
            }
        EXPECT_EQ(reader.load(0, c.slabDepth + 2), c.slabDepth + 2 > 9) << "deeper than the slab, within the volume";
        EXPECT_FALSE(reader.load(9, 1));
    }
}

TEST_F(LabelRecordFile, WritingOutOfTurnOrUnfinishedIsRefused)
{
    const ZN3DImage<int> image = randomLabels(6, 5, 4, 0.2, 3);
    ZNLabelRecordFile file;
    EXPECT_FALSE(file.create(path(), georef::BlocSpace(0, 5, 4)));
    EXPECT_FALSE(file.create(dir.filePath(QStringLiteral("missing/labels.records")), image.blocSpace()));
    EXPECT_FALSE(file.appendSlices(image.data(), 1)) << "not created";
    ASSERT_TRUE(file.create(path(), image.blocSpace()));
    EXPECT_FALSE(file.appendSlices(image.data(), 5)) << "beyond the volume";
    EXPECT_FALSE(file.appendSlices(nullptr, 1));
    ASSERT_TRUE(file.appendSlices(image.data(), 3));
    EXPECT_EQ(file.slicesWritten(), 3);
    EXPECT_FALSE(file.isReadable());
    EXPECT_EQ(file.recordCount(0, 4), 0);
    EXPECT_FALSE(file.readRecords(0, 1, [](int, const Record*, std::size_t) {}));
    EXPECT_FALSE(ZNLabelSlabReader(&file, 2).isUsable());
    EXPECT_FALSE(file.finish()) << "a slice is missing";
    EXPECT_FALSE(file.appendSlices(image.slice(3), 1)) << "a failed file stays unusable";
    EXPECT_FALSE(file.finish());

    ASSERT_TRUE(write(file, path(), image, 4)) << "created again, it starts afresh";
    EXPECT_FALSE(file.appendSlices(image.data(), 1)) << "finished";
    const auto none = [](int, const Record*, std::size_t) {};
    EXPECT_FALSE(file.readRecords(-1, 1, none));
    EXPECT_FALSE(file.readRecords(3, 2, none));
    EXPECT_FALSE(file.readRecords(0, 0, none));
    EXPECT_FALSE(file.readRecords(0, 1, ZNLabelRecordFile::RecordSink()));
}

TEST_F(LabelRecordFile, ACorruptOrShortenedFileFailsTheReadInsteadOfWritingOutsideTheSlab)
{
    const ZN3DImage<int> image = randomLabels(16, 8, 3, 0.25, 11);
    const long long records = labelledIn(image, 0, 3);
    ASSERT_GT(records, 10);
    struct Case {
        const char* name;
        Record written;   // put over the first record; index UINT32_MAX: the file is cut instead
    };
    const Case cases[] = {
        {"an index beyond its slice", {16 * 8, 5}},
        {"the largest index", {0xffffffffu - 1, 5}},
        {"a label below 1", {3, 0}},
        {"a negative label", {3, -9999}},
        {"cut short", {0xffffffffu, 0}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ZNLabelRecordFile file;
        ASSERT_TRUE(write(file, path(), image, 3));
        if (c.written.index == 0xffffffffu) {
            ASSERT_TRUE(QFile::resize(path(), (records - 1) * static_cast<qint64>(sizeof(Record))));
        } else {
            QFile raw(path());
            ASSERT_TRUE(raw.open(QIODevice::ReadWrite));
            ASSERT_EQ(raw.write(reinterpret_cast<const char*>(&c.written), sizeof(Record)),
                      static_cast<qint64>(sizeof(Record)));
        }
        long long seen = 0;
        EXPECT_FALSE(file.readRecords(0, 3, [&seen](int, const Record*, std::size_t n) { seen += n; }));
        EXPECT_LT(seen, records);
        ZNLabelSlabReader reader(&file, 3);
        EXPECT_FALSE(reader.load(0, 3));
        EXPECT_EQ(reader.slice(0), nullptr);
    }
}
