#include "znbloc.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>
#include <vector>

#include <QFileDevice>
#include <QtEndian>

#include "zneventbus.h"
#include "znobjectfile.h"
#include "znobjectfilewriter.h"
#include "znxml.h"

namespace {

const QString kType = QStringLiteral("ZNBloc");
const QString kNx = QStringLiteral("nx");
const QString kNy = QStringLiteral("ny");
const QString kNz = QStringLiteral("nz");
const QString kSampleType = QStringLiteral("sampleType");
const QString kMatrix = QStringLiteral("fromBlocToWorld");
const QString kUnits = QStringLiteral("unitsObject");

struct TypeInfo {
    const char* name;
    int bytes;
};
// Indexed by ZNBloc::SampleType.
constexpr TypeInfo kTypes[] = {{"uint8", 1}, {"int16", 2}, {"int32", 4}, {"float32", 4}};
constexpr int kTypeCount = sizeof(kTypes) / sizeof(kTypes[0]);

constexpr int kCopyChunk = 1 << 20;   // bytes per read when a block copies its samples
constexpr int kNoValue = -9999;       // written for a real that has no integer value

// The block space of the box whose origin is (x0, y0, z0) in `space`: the same matrix
// moved so that every sample keeps its world position.
georef::BlocSpace boxSpace(const georef::BlocSpace& space, int x0, int y0, int z0, int cx,
                           int cy, int cz)
{
    const core::mat4 shift = core::mat4::translation({double(x0), double(y0), double(z0)});
    return georef::BlocSpace(cx, cy, cz, space.getFromBlocToWorldMatrix() * shift);
}

// A sample value as the integer type I: the nearest integer within range; kNoValue for
// a real without one (NaN, infinities, out of range), so that a float never wraps.
template <class I, class V>
I toInteger(V v)
{
    if constexpr (std::is_integral_v<V>) {
        if (v < std::numeric_limits<I>::min() || v > std::numeric_limits<I>::max())
            return static_cast<I>(kNoValue);
        return static_cast<I>(v);
    } else {
        const double r = std::nearbyint(static_cast<double>(v));
        if (!(r >= double(std::numeric_limits<I>::min()) &&
              r <= double(std::numeric_limits<I>::max())))
            return static_cast<I>(kNoValue);
        return static_cast<I>(r);
    }
}

template <class T, class V>
T convert(V v)
{
    if constexpr (std::is_floating_point_v<T>) return static_cast<T>(v);
    else return toInteger<T>(v);
}

// Decodes `n` little-endian samples of `type` from `raw` into `out`.
template <class T>
void decode(const char* raw, int type, std::size_t n, T* out)
{
    switch (type) {
    case ZNBloc::UInt8:
        for (std::size_t i = 0; i < n; ++i)
            out[i] = static_cast<T>(static_cast<unsigned char>(raw[i]));
        break;
    case ZNBloc::Int16:
        for (std::size_t i = 0; i < n; ++i)
            out[i] = static_cast<T>(qFromLittleEndian<qint16>(raw + 2 * i));
        break;
    case ZNBloc::Int32:
        for (std::size_t i = 0; i < n; ++i)
            out[i] = convert<T>(qFromLittleEndian<qint32>(raw + 4 * i));
        break;
    default: {
        for (std::size_t i = 0; i < n; ++i) {
            const quint32 bits = qFromLittleEndian<quint32>(raw + 4 * i);
            float f;
            std::memcpy(&f, &bits, sizeof f);
            out[i] = convert<T>(f);
        }
    }
    }
}

// Encodes `n` samples into little-endian samples of `type` in `raw`.
template <class T>
void encode(const T* in, int type, std::size_t n, char* raw)
{
    switch (type) {
    case ZNBloc::UInt8:
        for (std::size_t i = 0; i < n; ++i) {
            const int v = toInteger<int>(in[i]);
            raw[i] = static_cast<char>(v < 0 ? 0 : (v > 255 ? 255 : v));
        }
        break;
    case ZNBloc::Int16:
        for (std::size_t i = 0; i < n; ++i)
            qToLittleEndian<qint16>(toInteger<qint16>(in[i]), raw + 2 * i);
        break;
    case ZNBloc::Int32:
        for (std::size_t i = 0; i < n; ++i)
            qToLittleEndian<qint32>(toInteger<qint32>(in[i]), raw + 4 * i);
        break;
    default:
        for (std::size_t i = 0; i < n; ++i) {
            const float f = static_cast<float>(in[i]);
            quint32 bits;
            std::memcpy(&bits, &f, sizeof bits);
            qToLittleEndian<quint32>(bits, raw + 4 * i);
        }
    }
}

// True when samples of `type` are stored exactly as T is held in memory.
template <class T>
bool sameLayout(int type)
{
    const bool littleEndianHost = QSysInfo::ByteOrder == QSysInfo::LittleEndian;
    if (std::is_same_v<T, float>) return littleEndianHost && type == ZNBloc::Float32;
    if (std::is_same_v<T, int> && sizeof(int) == 4)
        return littleEndianHost && type == ZNBloc::Int32;
    return false;
}

void reportReadError(const QString& path)
{
    ZNEventBus::sendMessage(ZNEventBus::FileError, QStringLiteral("Error when reading ") + path);
}

} // namespace

ZNBloc::ZNBloc() = default;
ZNBloc::~ZNBloc() = default;

int ZNBloc::bytesPerSample(int type)
{
    return type >= 0 && type < kTypeCount ? kTypes[type].bytes : 0;
}

QString ZNBloc::sampleTypeName(int type)
{
    return type >= 0 && type < kTypeCount ? QString::fromLatin1(kTypes[type].name) : QString();
}

int ZNBloc::sampleTypeFromName(const QString& name)
{
    for (int t = 0; t < kTypeCount; ++t)
        if (name == QLatin1String(kTypes[t].name)) return t;
    return -1;
}

bool ZNBloc::isOpen() const { return m_reader.isOpen() || m_writer != nullptr || m_memory != nullptr; }

qint64 ZNBloc::sliceBytes() const
{
    qint64 bytes = 0;
    if (__builtin_mul_overflow(qint64(nx()) * ny(), qint64(bytesPerSample(m_type)), &bytes))
        return std::numeric_limits<qint64>::max();
    return bytes;
}

void ZNBloc::reset()
{
    if (m_mapped) m_reader.unmap(const_cast<uchar*>(m_mapped));
    m_mapped = nullptr;
    m_mappingTried = false;
    m_memory.reset();
    m_reader.close();
    m_writer.reset();
    m_path.clear();
    m_space = georef::BlocSpace();
    m_type = Float32;
    m_units = georef::UnitObject();
    m_dataOffset = -1;
    m_createdDepth = 0;
}

QString ZNBloc::getZNObjectType() const { return kType; }

QDomElement ZNBloc::createHeader(QDomDocument& doc) const
{
    QDomElement e = doc.createElement(kType);
    ZNXml::appendInt(doc, e, kNx, nx());
    ZNXml::appendInt(doc, e, kNy, ny());
    ZNXml::appendInt(doc, e, kNz, nz());
    ZNXml::appendString(doc, e, kSampleType, sampleTypeName(m_type));
    ZNXml::appendMatrix(doc, e, kMatrix, m_space.getFromBlocToWorldMatrix());
    e.appendChild(m_units.createElement(doc, kUnits));
    return e;
}

bool ZNBloc::getHeader(const QDomElement* header)
{
    if (header == nullptr || header->tagName() != kType) return false;
    bool ok[3] = {false, false, false};
    const long long sizes[3] = {ZNXml::readInt(*header, kNx, -1, &ok[0]),
                                ZNXml::readInt(*header, kNy, -1, &ok[1]),
                                ZNXml::readInt(*header, kNz, -1, &ok[2])};
    for (int i = 0; i < 3; ++i)
        if (!ok[i] || sizes[i] < 0 || sizes[i] > std::numeric_limits<int>::max()) return false;
    const int type = sampleTypeFromName(ZNXml::readString(*header, kSampleType));
    if (type < 0) return false;
    georef::BlocSpace space(static_cast<int>(sizes[0]), static_cast<int>(sizes[1]),
                            static_cast<int>(sizes[2]));
    if (!space.setFromBlocToWorldMatrix(
            ZNXml::readMatrix(*header, kMatrix, core::mat4::identity())))
        return false;
    m_space = space;
    m_type = type;
    m_units = georef::UnitObject::fromElement(header->firstChildElement(kUnits));
    return true;
}

bool ZNBloc::open(const QString& path)
{
    reset();
    ZNObjectFile::Header header;
    if (!ZNObjectFile::readHeader(path, header, kType) ||
        !getHeader(&header.objectHeader)) {
        ZNEventBus::sendMessage(ZNEventBus::FileError,
                                QStringLiteral("Not a readable block file: ") + path);
        reset();
        return false;
    }
    m_reader.setFileName(ZNObjectFile::platformPath(path));
    // The samples must fit the file: every product is checked before it is made.
    qint64 sampleBytes = 0;
    const bool fits = !__builtin_mul_overflow(sliceBytes(), qint64(nz()), &sampleBytes) &&
                      sampleBytes <= std::numeric_limits<qint64>::max() - header.dataOffset;
    if (!fits || !m_reader.open(QIODevice::ReadOnly) ||
        m_reader.size() < header.dataOffset + sampleBytes) {
        ZNEventBus::sendMessage(ZNEventBus::FileError,
                                QStringLiteral("Block file too short for its samples: ") + path);
        reset();
        return false;
    }
    m_path = path;
    m_dataOffset = header.dataOffset;
    return true;
}

bool ZNBloc::openImage(std::shared_ptr<const ZN3DImage<float>> image, const georef::UnitObject& units)
{
    reset();
    if (!image || image->isEmpty()) return false;
    m_memory = std::move(image);
    m_space = m_memory->blocSpace();
    m_type = Float32;
    m_units = units;
    return true;
}

float ZNBloc::sampleAt(qint64 i) const
{
    if (m_memory) return m_memory->data()[i];
    float value = 0.0f;
    decode(reinterpret_cast<const char*>(m_mapped) + i * bytesPerSample(m_type), m_type, 1, &value);
    return value;
}

bool ZNBloc::mapSamples()
{
    if (m_mapped || m_memory) return true;
    if (m_mappingTried || !m_reader.isOpen()) return false;
    m_mappingTried = true;
    const qint64 bytes = qint64(nz()) * sliceBytes();
    // A mapping needs the address space to hold the whole block; a 32-bit process reads
    // by slice instead.
    if (bytes <= 0 || static_cast<quint64>(bytes) > std::numeric_limits<std::size_t>::max() / 2) return false;
    m_mapped = m_reader.map(m_dataOffset, bytes);
    return m_mapped != nullptr;
}

bool ZNBloc::create(const QString& path, const georef::BlocSpace& space, int firstSlice,
                    int lastSlice, int sampleType, const georef::UnitObject& units)
{
    reset();
    if (firstSlice < 0 || lastSlice > space.nz() || firstSlice >= lastSlice || space.isEmpty() ||
        bytesPerSample(sampleType) == 0)
        return false;
    m_space = boxSpace(space, 0, 0, firstSlice, space.nx(), space.ny(), lastSlice - firstSlice);
    m_type = sampleType;
    m_units = units;
    m_writer = std::make_unique<ZNObjectFileWriter>(path);
    m_dataOffset = m_writer->create(createHeaderDocument(), kHeaderReserve);
    if (m_dataOffset < 0) {
        reset();
        return false;
    }
    m_path = path;
    m_createdDepth = nz();
    return true;
}

bool ZNBloc::setDepth(int depth)
{
    if (!m_writer || depth < 0 || depth > m_createdDepth) return false;
    m_space.setSize(nx(), ny(), depth);
    return true;
}

bool ZNBloc::close()
{
    const bool ok = m_writer ? finishCreated() : true;
    reset();
    return ok;
}

// Rewrites the header of the temporary in place, as the container does for a finished
// file (the new header must fit before the samples), sizes the file to its samples and
// replaces the target.
bool ZNBloc::finishCreated()
{
    QIODevice* device = m_writer->device();
    auto* file = qobject_cast<QFileDevice*>(device);
    if (device == nullptr || file == nullptr) return false;
    const QByteArray text = ZNObjectFile::headerBytes(createHeaderDocument());
    const qint64 length = text.size();
    if (length + ZNObjectFile::kGlobalHeaderSize + 1 >= m_dataOffset) {
        ZNEventBus::sendMessage(ZNEventBus::FileError,
                                ZNObjectFile::errorText(ZNObjectFile::ErrorHeaderResize));
        m_writer->fail();
        return false;
    }
    const QByteArray block = ZNObjectFile::globalHeaderBlock(length, m_dataOffset);
    const bool written =
        device->seek(0) && device->write(block) == block.size() && device->write(text) == length &&
        ZNObjectFile::writeZeros(*device,
                                 m_dataOffset - ZNObjectFile::kGlobalHeaderSize - length) &&
        file->resize(m_dataOffset + qint64(nz()) * sliceBytes());
    if (!written) {
        m_writer->fail();
        return false;
    }
    return m_writer->commit();
}

bool ZNBloc::readSamples(qint64 sampleIndex, qint64 count, char* destination)
{
    const int bytes = bytesPerSample(m_type);
    const qint64 length = count * bytes;
    if (!m_reader.seek(m_dataOffset + sampleIndex * bytes) ||
        m_reader.read(destination, length) != length) {
        reportReadError(m_path);
        return false;
    }
    return true;
}

template <class T>
bool ZNBloc::readBoxAs(int x0, int y0, int z0, int cx, int cy, int cz, ZN3DImage<T>& out)
{
    if (!isBoxReadable(x0, y0, z0, cx, cy, cz)) return false;
    // Every sample of the box is written below.
    ZN3DImage<T> box = ZN3DImage<T>::unfilled(boxSpace(m_space, x0, y0, z0, cx, cy, cz));
    if (box.isNull() || !readBoxInto(x0, y0, z0, cx, cy, cz, box.data())) return false;
    out = std::move(box);
    return true;
}

bool ZNBloc::isBoxReadable(int x0, int y0, int z0, int cx, int cy, int cz) const
{
    const bool inside = x0 >= 0 && y0 >= 0 && z0 >= 0 && cx > 0 && cy > 0 && cz > 0 &&
                        cx <= nx() - x0 && cy <= ny() - y0 && cz <= nz() - z0;
    return inside && (m_reader.isOpen() || m_memory);
}

template <class T>
bool ZNBloc::readBoxInto(int x0, int y0, int z0, int cx, int cy, int cz, T* target)
{
    const auto at = [&](int x, int y, int z) {
        return target + (static_cast<std::size_t>(z) * cy + static_cast<std::size_t>(y)) * cx + x;
    };
    if (m_memory) {
        for (int z = 0; z < cz; ++z)
            for (int y = 0; y < cy; ++y)
                for (int x = 0; x < cx; ++x) *at(x, y, z) = convert<T>((*m_memory)(x0 + x, y0 + y, z0 + z));
        return true;
    }
    // Whole rows follow each other in the file, so a box as wide as the block reads in
    // one run per slice, and one as wide and as high as the block in one run; otherwise
    // one run per row.
    const bool wholeRows = cx == nx();
    const bool wholeSlices = wholeRows && cy == ny();
    const qint64 run = wholeSlices ? qint64(cx) * cy * cz : wholeRows ? qint64(cx) * cy : cx;
    const bool direct = sameLayout<T>(m_type);
    // Converted samples go through a buffer of at most kCopyChunk bytes.
    const qint64 piece = direct ? run : std::min<qint64>(run, std::max<qint64>(1, kCopyChunk / bytesPerSample(m_type)));
    std::vector<char> raw;
    if (!direct) raw.resize(static_cast<std::size_t>(piece * bytesPerSample(m_type)));
    for (int z = 0; z < cz; z += wholeSlices ? cz : 1)
        for (int y = 0; y < cy; y += wholeRows ? cy : 1) {
            T* destination = at(0, y, z);
            const qint64 first = (qint64(z0 + z) * ny() + y0 + y) * nx() + x0;
            for (qint64 done = 0; done < run; done += piece) {
                const qint64 count = std::min(piece, run - done);
                char* bytes = direct ? reinterpret_cast<char*>(destination + done) : raw.data();
                if (!readSamples(first + done, count, bytes)) return false;
                if (!direct) decode(raw.data(), m_type, static_cast<std::size_t>(count), destination + done);
            }
        }
    return true;
}

bool ZNBloc::readSlices(int z0, int count, float* out)
{
    return out != nullptr && isBoxReadable(0, 0, z0, nx(), ny(), count) &&
           readBoxInto(0, 0, z0, nx(), ny(), count, out);
}

bool ZNBloc::readSlices(int z0, int count, int* out)
{
    return out != nullptr && isBoxReadable(0, 0, z0, nx(), ny(), count) &&
           readBoxInto(0, 0, z0, nx(), ny(), count, out);
}

bool ZNBloc::readBox(int x0, int y0, int z0, int cx, int cy, int cz, ZN3DImage<float>& out)
{
    return readBoxAs(x0, y0, z0, cx, cy, cz, out);
}

bool ZNBloc::readBox(int x0, int y0, int z0, int cx, int cy, int cz, ZN3DImage<int>& out)
{
    return readBoxAs(x0, y0, z0, cx, cy, cz, out);
}

bool ZNBloc::readSlice(int z, img::Image& out)
{
    ZN3DImage<float> slice;
    if (!readBox(0, 0, z, nx(), ny(), 1, slice)) return false;
    img::Image image(nx(), ny());
    if (image.isNull()) return false;
    std::memcpy(image.data(), slice.data(), slice.voxelCount() * sizeof(float));
    out = std::move(image);
    return true;
}

template <class T>
bool ZNBloc::writeSlicesAs(int z, const ZN3DImage<T>& image, int firstImageSlice, int count)
{
    QIODevice* device = m_writer ? m_writer->device() : nullptr;
    const bool usable = device != nullptr && image.nx() == nx() && image.ny() == ny() &&
                        count > 0 && firstImageSlice >= 0 &&
                        count <= image.nz() - firstImageSlice && z >= 0 && count <= nz() - z;
    if (!usable) return false;
    const std::size_t samples = image.sliceSize();
    const bool direct = sameLayout<T>(m_type);
    std::vector<char> raw;
    if (!direct) raw.resize(samples * static_cast<std::size_t>(bytesPerSample(m_type)));
    for (int k = 0; k < count; ++k) {
        const T* slice = image.slice(firstImageSlice + k);
        const char* bytes = direct ? reinterpret_cast<const char*>(slice) : raw.data();
        if (!direct) encode(slice, m_type, samples, raw.data());
        const qint64 offset = m_dataOffset + qint64(z + k) * sliceBytes();
        if (!device->seek(offset) || device->write(bytes, sliceBytes()) != sliceBytes() ||
            !m_writer->streamed(offset, sliceBytes())) {
            m_writer->fail();
            return false;
        }
    }
    return true;
}

bool ZNBloc::writeSlices(int z, const ZN3DImage<int>& image, int firstImageSlice, int count)
{
    return writeSlicesAs(z, image, firstImageSlice, count);
}

bool ZNBloc::writeSlices(int z, const ZN3DImage<float>& image, int firstImageSlice, int count)
{
    return writeSlicesAs(z, image, firstImageSlice, count);
}

bool ZNBloc::writeData(QIODevice& file, qint64 offset) const
{
    if (m_memory) {
        if (!file.seek(offset)) return false;
        const std::size_t n = m_memory->voxelCount();
        std::vector<char> raw(std::min<std::size_t>(n, kCopyChunk / 4) * 4);
        for (std::size_t done = 0; done < n;) {
            const std::size_t count = std::min(n - done, raw.size() / 4);
            encode(m_memory->data() + done, Float32, count, raw.data());
            if (file.write(raw.data(), qint64(count * 4)) != qint64(count * 4)) return false;
            done += count;
        }
        return true;
    }
    if (!m_reader.isOpen() || !file.seek(offset)) return false;
    qint64 remaining = qint64(nz()) * sliceBytes();
    if (!m_reader.seek(m_dataOffset)) return false;
    std::vector<char> chunk(static_cast<std::size_t>(qMin<qint64>(remaining, kCopyChunk)));
    while (remaining > 0) {
        const qint64 length = qMin<qint64>(remaining, kCopyChunk);
        if (m_reader.read(chunk.data(), length) != length ||
            file.write(chunk.data(), length) != length)
            return false;
        remaining -= length;
    }
    return true;
}
