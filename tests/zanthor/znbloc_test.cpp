#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <limits>
#include <utility>
#include <vector>

#include <QFile>
#include <QTemporaryDir>

#include <testfiles.h>
#include <testservices.h>
#include <znbloc.h>
#include <znobjectfile.h>
#include <znobjectfilewriter.h>
#include <znxml.h>

namespace {

core::mat4 surveyMatrix()
{
    core::mat4 m = core::mat4::translation({1000.0, -4.0, 2000.0});
    m(0, 0) = 12.5;
    m(1, 2) = -4.0;  // samples go down
    m(2, 1) = 25.0;
    return m;
}

// Sample (x, y, z) of the test volumes: distinct, small integers.
float sampleAt(int x, int y, int z) { return static_cast<float>(x + 10 * y + 100 * z); }

template <class T>
ZN3DImage<T> ramp(int nx, int ny, int nz, int zOffset = 0)
{
    ZN3DImage<T> image(nx, ny, nz);
    for (int z = 0; z < nz; ++z)
        for (int y = 0; y < ny; ++y)
            for (int x = 0; x < nx; ++x)
                image(x, y, z) = static_cast<T>(sampleAt(x, y, z + zOffset));
    return image;
}

class BlocTest : public testing::Test {
protected:
    QTemporaryDir dir;
    RecordingEventBus bus;
    QString path(const QString& name = QStringLiteral("volume.znb")) const
    {
        return dir.filePath(name);
    }

    // Writes every slice of `image` to path() as a block of `type` samples whose matrix is
    // `toWorld`; false when a step fails.
    template <class T>
    bool write(const ZN3DImage<T>& image, int type, const core::mat4& toWorld = core::mat4())
    {
        ZNBloc bloc;
        const georef::BlocSpace space(image.nx(), image.ny(), image.nz(), toWorld);
        return bloc.create(path(), space, 0, image.nz(), type) &&
               bloc.writeSlices(0, image, 0, image.nz()) && bloc.close();
    }
    // A 4 x 3 x 5 block of ramp samples whose matrix is surveyMatrix().
    QString writeRamp(int type = ZNBloc::Float32)
    {
        EXPECT_TRUE(write(ramp<float>(4, 3, 5), type, surveyMatrix()));
        return path();
    }

    // An object file holding the "ZNBloc" element `header` and `data`.
    QString writeRaw(const QDomElement& header, const QByteArray& data)
    {
        QDomDocument doc;
        QDomElement root = ZNObjectFile::createHeaderDocument(doc);
        root.appendChild(doc.importNode(header, true));
        ZNObjectFileWriter writer(path(QStringLiteral("raw.znb")));
        const qint64 offset = writer.create(doc, 0);
        EXPECT_GE(offset, 0);
        EXPECT_EQ(writer.device()->write(data), data.size());
        EXPECT_TRUE(writer.commit());
        return path(QStringLiteral("raw.znb"));
    }
};

} // namespace

TEST_F(BlocTest, SlicesWrittenOneByOneReadBackAsABoxWithTheirGeometry)
{
    georef::UnitObject units(georef::UnitObject::SpatialFoot,
                             georef::UnitObject::VerticalMillisecond);
    const georef::BlocSpace survey(4, 3, 9, surveyMatrix());
    ZNBloc out;
    ASSERT_TRUE(out.create(path(), survey, 2, 7, ZNBloc::Float32, units));
    const ZN3DImage<float> samples = ramp<float>(4, 3, 5, 2);
    for (int k = 4; k >= 0; --k) ASSERT_TRUE(out.writeSlices(k, samples, k, 1));
    ASSERT_TRUE(out.close());

    ZNBloc in;
    ASSERT_TRUE(in.open(path()));
    EXPECT_EQ(in.nx(), 4);
    EXPECT_EQ(in.ny(), 3);
    EXPECT_EQ(in.nz(), 5);
    EXPECT_EQ(in.sampleType(), ZNBloc::Float32);
    EXPECT_EQ(in.unitObject(), units);
    // Slice 0 of the file is slice 2 of the survey, at the same world place.
    const core::vec3 world = in.blocSpace().blocToWorld({1.0, 2.0, 0.0});
    const core::vec3 expected = survey.blocToWorld({1.0, 2.0, 2.0});
    EXPECT_DOUBLE_EQ(world.x, expected.x);
    EXPECT_DOUBLE_EQ(world.y, expected.y);
    EXPECT_DOUBLE_EQ(world.z, expected.z);

    ZN3DImage<float> all;
    ASSERT_TRUE(in.readBox(0, 0, 0, 4, 3, 5, all));
    EXPECT_TRUE(std::equal(all.data(), all.data() + all.voxelCount(), samples.data()));
    EXPECT_EQ(all.blocSpace(), in.blocSpace());
}

TEST_F(BlocTest, SubBoxesHoldTheirSamplesAndKeepTheirWorldPlace)
{
    writeRamp();
    ZNBloc in;
    ASSERT_TRUE(in.open(path()));
    struct Box {
        int x0, y0, z0, cx, cy, cz;
    };
    for (const Box b : {Box{0, 0, 0, 4, 3, 5}, Box{1, 1, 2, 2, 2, 3}, Box{0, 1, 4, 4, 2, 1},
                        Box{3, 2, 4, 1, 1, 1}}) {
        ZN3DImage<float> box;
        ASSERT_TRUE(in.readBox(b.x0, b.y0, b.z0, b.cx, b.cy, b.cz, box));
        ASSERT_EQ(box.nx(), b.cx);
        ASSERT_EQ(box.nz(), b.cz);
        for (int z = 0; z < b.cz; ++z)
            for (int y = 0; y < b.cy; ++y)
                for (int x = 0; x < b.cx; ++x)
                    EXPECT_EQ(box(x, y, z), sampleAt(x + b.x0, y + b.y0, z + b.z0));
        const core::vec3 a = box.blocSpace().blocToWorld({0.0, 0.0, 0.0});
        const core::vec3 e = in.blocSpace().blocToWorld({double(b.x0), double(b.y0), double(b.z0)});
        EXPECT_DOUBLE_EQ(a.x, e.x);
        EXPECT_DOUBLE_EQ(a.z, e.z);
    }
    img::Image slice;
    ASSERT_TRUE(in.readSlice(3, slice));
    EXPECT_EQ(slice.width(), 4);
    EXPECT_EQ(slice.height(), 3);
    EXPECT_EQ(slice(2, 1), sampleAt(2, 1, 3));
}

TEST_F(BlocTest, EverySampleTypeRoundTripsItsValuesIntoIntegerAndRealImages)
{
    for (int type : {ZNBloc::UInt8, ZNBloc::Int16, ZNBloc::Int32, ZNBloc::Float32}) {
        SCOPED_TRACE(ZNBloc::sampleTypeName(type).toStdString());
        ASSERT_TRUE(write(ramp<int>(4, 3, 2), type));
        ZNBloc in;
        ASSERT_TRUE(in.open(path()));
        EXPECT_EQ(in.sampleType(), type);
        ZN3DImage<int> asInt;
        ZN3DImage<float> asReal;
        ASSERT_TRUE(in.readBox(0, 0, 0, 4, 3, 2, asInt));
        ASSERT_TRUE(in.readBox(0, 0, 0, 4, 3, 2, asReal));
        const ZN3DImage<int> expected = ramp<int>(4, 3, 2);
        for (size_t i = 0; i < expected.voxelCount(); ++i) {
            EXPECT_EQ(asInt.data()[i], expected.data()[i]);
            EXPECT_EQ(asReal.data()[i], static_cast<float>(expected.data()[i]));
        }
        EXPECT_EQ(QFile(path()).size(), ZNObjectFile::getDataOffset(path()) +
                                            24 * ZNBloc::bytesPerSample(type));
    }
}

TEST_F(BlocTest, WholeSlicesReadIntoTheCallersMemoryHoldTheSamplesOfEveryTypeAndSource)
{
    // 600 x 500 slices are read through more than one conversion buffer of 1 MiB.
    struct Case {
        const char* name;
        int type, nx, ny, nz, z0, count;
        bool inMemory;
    };
    const Case cases[] = {
        {"uint8 (samples below 256)", ZNBloc::UInt8, 4, 3, 5, 1, 2, false},
        {"int16, several buffers", ZNBloc::Int16, 600, 500, 3, 1, 2, false},
        {"int32", ZNBloc::Int32, 4, 3, 5, 0, 5, false},
        {"float32, several buffers as integers", ZNBloc::Float32, 600, 500, 3, 0, 3, false},
        {"float32, the last slice", ZNBloc::Float32, 4, 3, 5, 4, 1, false},
        {"in memory", ZNBloc::Float32, 4, 3, 5, 2, 2, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const ZN3DImage<float> samples = ramp<float>(c.nx, c.ny, c.nz);
        ZNBloc in;
        if (c.inMemory) {
            ASSERT_TRUE(in.openImage(std::make_shared<const ZN3DImage<float>>(ramp<float>(c.nx, c.ny, c.nz))));
        } else {
            ASSERT_TRUE(write(samples, c.type));
            ASSERT_TRUE(in.open(path()));
        }
        const std::size_t n = samples.sliceSize() * static_cast<std::size_t>(c.count);
        std::vector<float> reals(n, -1.0f);
        std::vector<int> integers(n, -1);
        ASSERT_TRUE(in.readSlices(c.z0, c.count, reals.data()));
        ASSERT_TRUE(in.readSlices(c.z0, c.count, integers.data()));
        std::size_t wrong = 0;
        for (int z = 0; z < c.count; ++z)
            for (int y = 0; y < c.ny; ++y)
                for (int x = 0; x < c.nx; ++x) {
                    const std::size_t i = (static_cast<std::size_t>(z) * c.ny + y) * c.nx + x;
                    const float expected = sampleAt(x, y, c.z0 + z);
                    wrong += reals[i] != expected || integers[i] != static_cast<int>(expected);
                }
        EXPECT_EQ(wrong, 0u);
    }
}

TEST_F(BlocTest, SlicesOutsideTheBlockNowhereToGoOrOfABlockBeingWrittenAreRefusedUnread)
{
    writeRamp();
    ZNBloc in;
    ASSERT_TRUE(in.open(path()));
    std::vector<float> out(4 * 3 * 6, 42.0f);
    for (const auto& [z0, count] : {std::pair{-1, 1}, std::pair{5, 1}, std::pair{4, 2}, std::pair{0, 0},
                                    std::pair{0, 6}, std::pair{2, -1}})
        EXPECT_FALSE(in.readSlices(z0, count, out.data())) << z0 << " " << count;
    EXPECT_TRUE(std::all_of(out.begin(), out.end(), [](float v) { return v == 42.0f; }));
    EXPECT_FALSE(in.readSlices(0, 1, static_cast<float*>(nullptr)));
    ZNBloc out32;
    ASSERT_TRUE(out32.create(path(QStringLiteral("o.znb")), georef::BlocSpace(4, 3, 2), 0, 2, ZNBloc::Int32));
    std::vector<int> integers(12, 7);
    EXPECT_FALSE(out32.readSlices(0, 1, integers.data()));
    EXPECT_EQ(integers[0], 7);
    ZNBloc closed;
    EXPECT_FALSE(closed.readSlices(0, 1, integers.data()));
}

TEST_F(BlocTest, SamplesAreStoredLittleEndianAtTheDataOffset)
{
    ZN3DImage<int> image(2, 1, 1);
    image(0, 0, 0) = 0x01020304;
    image(1, 0, 0) = -9999;
    ASSERT_TRUE(write(image, ZNBloc::Int32));
    const QByteArray bytes = readFileBytes(path());
    const qint64 offset = ZNObjectFile::getDataOffset(path());
    EXPECT_EQ(bytes.mid(offset), QByteArray("\x04\x03\x02\x01\xf1\xd8\xff\xff", 8));
    EXPECT_EQ(ZNObjectFile::readObjectType(path()), QStringLiteral("ZNBloc"));
}

TEST_F(BlocTest, RealsWithoutAnIntegerValueReadAsNoValueInIntegerImages)
{
    ZN3DImage<float> image(4, 1, 1);
    image(0, 0, 0) = std::numeric_limits<float>::quiet_NaN();
    image(1, 0, 0) = 3e10f;
    image(2, 0, 0) = 2.6f;
    image(3, 0, 0) = -7.4f;
    ASSERT_TRUE(write(image, ZNBloc::Float32));
    ZNBloc in;
    ASSERT_TRUE(in.open(path()));
    ZN3DImage<int> asInt;
    ASSERT_TRUE(in.readBox(0, 0, 0, 4, 1, 1, asInt));
    EXPECT_EQ(std::vector<int>(asInt.data(), asInt.data() + 4),
              (std::vector<int>{-9999, -9999, 3, -7}));
}

TEST_F(BlocTest, ALoweredDepthDropsTheSlicesBeyondIt)
{
    ZNBloc out;
    ASSERT_TRUE(out.create(path(), georef::BlocSpace(4, 3, 5), 0, 5, ZNBloc::Float32));
    ASSERT_TRUE(out.writeSlices(0, ramp<float>(4, 3, 5), 0, 5));
    EXPECT_FALSE(out.setDepth(6));
    EXPECT_FALSE(out.setDepth(-1));
    ASSERT_TRUE(out.setDepth(2));
    ASSERT_TRUE(out.close());
    ZNBloc in;
    ASSERT_TRUE(in.open(path()));
    EXPECT_EQ(in.nz(), 2);
    EXPECT_EQ(QFile(path()).size(), ZNObjectFile::getDataOffset(path()) + 2 * 12 * 4);
    ZN3DImage<float> box;
    ASSERT_TRUE(in.readBox(0, 0, 1, 4, 3, 1, box));
    EXPECT_EQ(box(3, 2, 0), sampleAt(3, 2, 1));
}

TEST_F(BlocTest, ABlockDestroyedBeforeCloseLeavesTheTargetAsItWas)
{
    writeRamp();
    const QByteArray before = readFileBytes(path());
    {
        ZNBloc out;
        ASSERT_TRUE(out.create(path(), georef::BlocSpace(2, 2, 2), 0, 2, ZNBloc::Int32));
        ASSERT_TRUE(out.writeSlices(0, ramp<int>(2, 2, 2), 0, 2));
    }
    EXPECT_EQ(readFileBytes(path()), before);
}

TEST_F(BlocTest, BoxesAndSlicesOutsideTheBlockAreRefusedAndLeaveTheImageAlone)
{
    writeRamp();
    ZNBloc in;
    ASSERT_TRUE(in.open(path()));
    ZN3DImage<float> image(1, 1, 1);
    image(0, 0, 0) = 42.0f;
    struct Box {
        int x0, y0, z0, cx, cy, cz;
    };
    for (const Box b :
         {Box{-1, 0, 0, 1, 1, 1}, Box{0, 0, 0, 5, 3, 5}, Box{0, 2, 0, 4, 2, 1},
          Box{0, 0, 5, 4, 3, 1}, Box{0, 0, 0, 0, 3, 5}, Box{3, 0, 0, 2147483647, 1, 1}})
        EXPECT_FALSE(in.readBox(b.x0, b.y0, b.z0, b.cx, b.cy, b.cz, image));
    EXPECT_EQ(image.nx(), 1);
    EXPECT_EQ(image(0, 0, 0), 42.0f);
    EXPECT_FALSE(in.writeSlices(0, ramp<float>(4, 3, 1), 0, 1));  // opened for reading

    ZNBloc out;
    ASSERT_TRUE(
        out.create(path(QStringLiteral("o.znb")), georef::BlocSpace(4, 3, 2), 0, 2, ZNBloc::Int32));
    EXPECT_FALSE(out.writeSlices(0, ramp<int>(3, 3, 1), 0, 1));   // other width
    EXPECT_FALSE(out.writeSlices(2, ramp<int>(4, 3, 1), 0, 1));   // beyond the depth
    EXPECT_FALSE(out.writeSlices(0, ramp<int>(4, 3, 1), 1, 1));   // beyond the image
    EXPECT_FALSE(out.readBox(0, 0, 0, 1, 1, 1, image));           // being written
    EXPECT_TRUE(out.writeSlices(1, ramp<int>(4, 3, 1), 0, 1));
}

TEST_F(BlocTest, CreationRefusesEmptyOrOutsideBoxesUnknownTypesAndUnwritablePlaces)
{
    const georef::BlocSpace space(4, 3, 5);
    ZNBloc out;
    EXPECT_FALSE(out.create(path(), space, -1, 3, ZNBloc::Int32));
    EXPECT_FALSE(out.create(path(), space, 2, 6, ZNBloc::Int32));
    EXPECT_FALSE(out.create(path(), space, 3, 3, ZNBloc::Int32));
    EXPECT_FALSE(out.create(path(), space, 0, 5, 7));
    EXPECT_FALSE(out.create(path(), georef::BlocSpace(0, 3, 5), 0, 5, ZNBloc::Int32));
    EXPECT_FALSE(QFile::exists(path()));
    EXPECT_FALSE(out.create(dir.filePath(QStringLiteral("missing/volume.znb")), space, 0, 5,
                            ZNBloc::Int32));
    EXPECT_FALSE(out.isOpen());
    EXPECT_FALSE(bus.messages.isEmpty());
    EXPECT_TRUE(out.close());  // nothing open: nothing to complete
}

TEST_F(BlocTest, AnOpenedBlockSavesACopyOfItselfAsAnObjectFile)
{
    writeRamp(ZNBloc::Int16);
    ZNBloc in;
    ASSERT_TRUE(in.open(path()));
    ASSERT_TRUE(in.writeObjectFile(path(QStringLiteral("copy.znb"))));
    ZNBloc copy;
    ASSERT_TRUE(copy.open(path(QStringLiteral("copy.znb"))));
    EXPECT_EQ(copy.blocSpace(), in.blocSpace());
    EXPECT_EQ(copy.sampleType(), ZNBloc::Int16);
    ZN3DImage<int> a, b;
    ASSERT_TRUE(in.readBox(0, 0, 0, 4, 3, 5, a));
    ASSERT_TRUE(copy.readBox(0, 0, 0, 4, 3, 5, b));
    EXPECT_TRUE(std::equal(a.data(), a.data() + a.voxelCount(), b.data()));
    ZNBloc closed;
    EXPECT_FALSE(closed.writeObjectFile(path(QStringLiteral("none.znb"))));
}

TEST_F(BlocTest, CorruptFilesAreRefusedWithoutChangingTheBlock)
{
    auto element = [](const QString& nx, const QString& type, const QString& matrix,
                      const QString& ny = QStringLiteral("3"), const QString& nz = QStringLiteral("5")) {
        QDomDocument doc;
        QDomElement e = doc.createElement(QStringLiteral("ZNBloc"));
        if (!nx.isEmpty()) ZNXml::appendString(doc, e, QStringLiteral("nx"), nx);
        ZNXml::appendString(doc, e, QStringLiteral("ny"), ny);
        ZNXml::appendString(doc, e, QStringLiteral("nz"), nz);
        ZNXml::appendString(doc, e, QStringLiteral("sampleType"), type);
        if (!matrix.isEmpty())
            ZNXml::appendString(doc, e, QStringLiteral("fromBlocToWorld"), matrix);
        return e;
    };
    const QString identity = QStringLiteral("1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1");
    const QByteArray full(4 * 3 * 5 * 4, '\x01');
    struct Case {
        const char* what;
        QString nx, type, matrix;
        QByteArray data;
        QString ny = QStringLiteral("3"), nz = QStringLiteral("5");
    };
    const std::vector<Case> cases{
        {"one byte short", "4", "float32", identity, full.left(full.size() - 1)},
        {"no samples", "4", "float32", identity, {}},
        {"negative size", "-4", "float32", identity, full},
        {"size beyond int", "99999999999", "float32", identity, full},
        {"huge size", "2147483647", "float32", identity, full},
        {"missing size", "", "float32", identity, full},
        {"size not a number", "four", "float32", identity, full},
        {"unknown type", "4", "float64", identity, full},
        {"singular matrix", "4", "float32", QStringLiteral("0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0"),
         full},
        // Sizes whose products overflow 64 bits (a slice, then the samples): refused
        // without the product being made.
        {"huge slice", "2147483647", "float32", identity, full, "2147483647"},
        {"huge slices", "2147483647", "int16", identity, full, "2147483647", "2147483647"},
        {"many slices", "2147483647", "float32", identity, full, "2", "2147483647"},
    };
    const QString good = writeRamp();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const QString bad = writeRaw(element(c.nx, c.type, c.matrix, c.ny, c.nz), c.data);
        ZNBloc bloc;
        ASSERT_TRUE(bloc.open(good));
        EXPECT_FALSE(bloc.open(bad));
        EXPECT_FALSE(bloc.isOpen());
        EXPECT_EQ(bloc.nz(), 0);
        ZN3DImage<float> box;
        EXPECT_FALSE(bloc.readBox(0, 0, 0, 1, 1, 1, box));
    }
    // A valid header over exactly enough data opens.
    ZNBloc bloc;
    EXPECT_TRUE(bloc.open(writeRaw(element("4", "float32", identity), full)));

    ASSERT_TRUE(writeFileBytes(path(QStringLiteral("junk.znb")), QByteArray(3000, 'x')));
    EXPECT_FALSE(bloc.open(path(QStringLiteral("junk.znb"))));
    EXPECT_FALSE(bloc.open(path(QStringLiteral("absent.znb"))));
    EXPECT_TRUE(bus.texts().last().contains(QStringLiteral("absent.znb")));
}

TEST_F(BlocTest, SectionsAndTracesReadTheSameSamplesFromAFileAndFromMemory)
{
    ASSERT_TRUE(write(ramp<float>(5, 4, 3), ZNBloc::Int16, surveyMatrix()));
    ZNBloc file;
    ASSERT_TRUE(file.open(path()));
    ZNBloc memory;
    ASSERT_TRUE(memory.openImage(std::make_shared<const ZN3DImage<float>>(ramp<float>(5, 4, 3))));
    EXPECT_TRUE(memory.isInMemory());
    EXPECT_EQ(memory.nx(), 5);
    struct Case {
        int axis, index, width, height;
        std::function<float(int c, int r)> expected;
    };
    const Case cases[] = {
        {ZNBloc::InlineSection, 3, 4, 3, [](int c, int r) { return sampleAt(3, c, r); }},
        {ZNBloc::CrosslineSection, 1, 5, 3, [](int c, int r) { return sampleAt(c, 1, r); }},
        {ZNBloc::TimeSlice, 2, 5, 4, [](int c, int r) { return sampleAt(c, r, 2); }},
    };
    for (ZNBloc* bloc : {&file, &memory})
        for (const Case& k : cases) {
            img::Image section;
            ASSERT_TRUE(bloc->readSection(k.axis, k.index, section)) << k.axis;
            ASSERT_EQ(section.width(), k.width);
            ASSERT_EQ(section.height(), k.height);
            for (int r = 0; r < k.height; ++r)
                for (int c = 0; c < k.width; ++c) EXPECT_EQ(section(c, r), k.expected(c, r)) << k.axis << c << r;
        }
    for (ZNBloc* bloc : {&file, &memory}) {
        float trace[3] = {};
        ASSERT_TRUE(bloc->readTrace(4, 2, trace));
        EXPECT_EQ(trace[2], sampleAt(4, 2, 2));
        ZN3DImage<float> box;
        ASSERT_TRUE(bloc->readBox(1, 1, 1, 2, 2, 2, box));
        EXPECT_EQ(box(1, 0, 1), sampleAt(2, 1, 2));
    }
}

TEST_F(BlocTest, SectionsOutsideTheBlockOrOfAClosedBlockAreRefusedAndLeaveTheImageAlone)
{
    ZNBloc memory;
    EXPECT_FALSE(memory.openImage(nullptr));
    ASSERT_TRUE(memory.openImage(std::make_shared<const ZN3DImage<float>>(ramp<float>(5, 4, 3))));
    img::Image untouched(2, 2, 7.0f);
    for (const std::pair<int, int>& bad : {std::pair<int, int>{ZNBloc::InlineSection, 5}, {ZNBloc::CrosslineSection, -1},
                                           {ZNBloc::TimeSlice, 3}, {7, 0}})
        EXPECT_FALSE(memory.readSection(bad.first, bad.second, untouched));
    float trace[3] = {1, 1, 1};
    EXPECT_FALSE(memory.readTrace(5, 0, trace));
    EXPECT_FALSE(memory.readTrace(0, 0, nullptr));
    EXPECT_EQ(untouched(1, 1), 7.0f);
    EXPECT_EQ(trace[0], 1.0f);
    memory.close();
    EXPECT_FALSE(memory.readSection(ZNBloc::TimeSlice, 0, untouched));
}

TEST_F(BlocTest, ABlockInMemorySavesItsSamplesAsAnObjectFile)
{
    ZNBloc memory;
    ASSERT_TRUE(memory.openImage(std::make_shared<const ZN3DImage<float>>(ramp<float>(4, 3, 2))));
    const QString copy = path(QStringLiteral("copy.znb"));
    ASSERT_TRUE(memory.writeObjectFile(copy, ZNBloc::kHeaderReserve));
    ZNBloc back;
    ASSERT_TRUE(back.open(copy));
    ZN3DImage<float> all;
    ASSERT_TRUE(back.readBox(0, 0, 0, 4, 3, 2, all));
    EXPECT_EQ(all(3, 2, 1), sampleAt(3, 2, 1));
}
