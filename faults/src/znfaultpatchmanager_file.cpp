// The fault set file: its header, its data block in the 2D and 3D forms, whole-file
// saving and reading, and the name check run before a save.
#include "znfaultpatchmanager.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <memory>
#include <optional>
#include <type_traits>
#include <vector>

#include <QIODevice>
#include <QtEndian>

#include <core/conventions.h>
#include <znbytesource.h>
#include <zneventbus.h>
#include <znfilename.h>
#include <znmessagebox.h>
#include <znobjectfile.h>
#include <znobjectfilewriter.h>
#include <znprocess.h>
#include <znstridedprogress.h>
#include <znxml.h>

namespace {

// Header keys and tags.
const QString kNumberOfPatch = QStringLiteral("numberOfPatch");
const QString kVersion = QStringLiteral("Version");
const QString kDimX = QStringLiteral("dimx");
const QString kDimY = QStringLiteral("dimy");
const QString kDimZ = QStringLiteral("dimz");
const QString kMatrix = QStringLiteral("fromBlocToWorldMatrix");
const QString kPicked = QStringLiteral("picked");
const QString kWithMesh = QStringLiteral("withMesh");
const QString kUnitsObject = QStringLiteral("unitsObject");
const QString kFaultLightTag = QStringLiteral("ZN3DFaultPatchLight");
const QString kPatchTag = QStringLiteral("ZNFaultPatch");
const QString kPickedType = QStringLiteral("ZNPickedFaultPatchManager");
const QString kAutomaticType = QStringLiteral("ZNFaultPatchManager");

// Messages, bar titles and actions.
const QString kCannotRead = QStringLiteral("The fault set cannot be read");
const QString kWriteError = QStringLiteral("File write error while writing fault picked point data");
const QString kWritingPoints = QStringLiteral("Writing Picked Point core::Array...");
const QString kLoadData = QStringLiteral("Load Data");
const QString kSaveTitle = QStringLiteral("Faults saving: Emergency Save");
const QString kUpdateDisplayCrs = QStringLiteral("UPDATE_DISPLAY_CRS");
const QString kNameErrorTitle = QStringLiteral("Error");
const QString kNameErrorEnd =
    QStringLiteral("<br>Operation aborted. Try again after renaming the fault.");

// The binary layout.
constexpr int kIntBytes = 4;
constexpr int kRealBytes = 8;
constexpr int kEntryBytes2D = 32;             // x, y, z, flag, 7 zero bytes
constexpr int kEntryBytes3D = 3 * kRealBytes; // x, y, z
constexpr int kFlagByte = 3 * kRealBytes;     // offset of the flag in a 2D entry
constexpr int kRectBytes = 4 * kRealBytes;    // left, top, right, bottom
constexpr int kMinBytesPerPatch = 2 * kIntBytes;  // a father and a count
constexpr int kFirstVersionWithForms = 3;     // older data is always in the 3D form
constexpr int kBlockIndexVersion = 0;         // 3D entries in block indices
constexpr int kBufferGrowth = 1 << 16;        // bytes of the encoding buffer's growth

static_assert(ZNFaultPatchManager::kNoProgressBar == ZNStridedProgress::kNoBar,
              "readers given no bar show none");
static_assert(sizeof(core::PointWithBool) == kEntryBytes2D &&
                  offsetof(core::PointWithBool, flag) == kFlagByte &&
                  std::is_trivially_copyable<core::PointWithBool>::value,
              "2D entries are read straight into the point lists");

// Sends the read failure and its reason; false.
bool refuse(const QString& reason)
{
    ZNEventBus::sendMessage(ZNEventBus::Error, kCannotRead);
    ZNEventBus::sendMessage(ZNEventBus::Detail, reason);
    return false;
}

bool reportWriteFailure()
{
    ZNEventBus::sendMessage(ZNEventBus::Error, kWriteError);
    return false;
}

uchar* putInt(uchar* out, qint32 value)
{
    qToLittleEndian<qint32>(value, out);
    return out + kIntBytes;
}

uchar* putReal(uchar* out, double value)
{
    qToLittleEndian<double>(value, out);
    return out + kRealBytes;
}

double getReal(const uchar* in) { return qFromLittleEndian<double>(in); }

// Stores one decoded entry; false, `out` untouched, when a coordinate is not finite. The
// fields are stored one by one: copying a whole entry built on the stack made the
// compiler reload it through misaligned moves, which stalled the read loops.
bool storeEntry(core::PointWithBool& out, const uchar* raw, bool flag)
{
    const double x = getReal(raw), y = getReal(raw + kRealBytes), z = getReal(raw + 2 * kRealBytes);
    if (!(std::isfinite(x) && std::isfinite(y) && std::isfinite(z))) return false;
    out.x = x;
    out.y = y;
    out.z = z;
    out.flag = flag;
    return true;
}

bool writeAll(QIODevice& file, const core::Array<uchar>& bytes)
{
    return file.write(reinterpret_cast<const char*>(bytes.data()), bytes.size()) == bytes.size();
}

// Encodes one patch into `buffer`: its count (-9999 kept for a container without
// counts), its entries in the form and, in the 2D form, its rectangle. False when the
// patch holds more entries than a reader accepts or the buffer cannot grow.
bool encodePatch(int count, const core::PointWithBool* points, const geom::Rect2d& rect,
                 bool twoD, core::Array<uchar>& buffer)
{
    const int entries = points && count > 0 ? count : 0;
    if (entries > ZNFaultPatchManager::kMaxPickedPointsPerPatch) return false;
    const int entryBytes = twoD ? kEntryBytes2D : kEntryBytes3D;
    if (!buffer.resize(kIntBytes + entries * entryBytes + (twoD ? kRectBytes : 0))) return false;

    uchar* out = putInt(buffer.data(), count == core::kNoValue ? count : entries);
    for (int k = 0; k < entries; ++k) {
        const core::PointWithBool& p = points[k];
        out = putReal(putReal(putReal(out, p.x), p.y), p.z);
        if (!twoD) continue;
        std::memset(out, 0, kEntryBytes2D - kFlagByte);
        out[0] = p.flag ? 1 : 0;
        out += kEntryBytes2D - kFlagByte;
    }
    if (twoD) putReal(putReal(putReal(putReal(out, rect.left), rect.top), rect.right), rect.bottom);
    return true;
}

// Reads `count` 2D entries straight into `points`, then rebuilds each from its bytes
// (a flag byte other than 0 reads as true). False on a short read or a non-finite
// coordinate.
bool read2DEntries(ZNByteSource& file, core::PointWithBool* points, int count)
{
    if (count == 0) return true;
    if (!file.read(points, qint64(count) * kEntryBytes2D)) return false;
    for (int k = 0; k < count; ++k) {
        const uchar* raw = reinterpret_cast<const uchar*>(points + k);
        if (!storeEntry(points[k], raw, raw[kFlagByte] != 0)) return false;
    }
    return true;
}

// Reads `count` 3D entries into `points`, flags false: the 24-byte records are read into
// the tail of the 32-byte entries and spread forward in place (record k never lies
// before entry k + 1's start until entry k is written). False on a short read or a
// non-finite coordinate.
bool read3DEntries(ZNByteSource& file, core::PointWithBool* points, int count)
{
    if (count == 0) return true;
    uchar* const base = reinterpret_cast<uchar*>(points);
    const qint64 tail = qint64(count) * (kEntryBytes2D - kEntryBytes3D);
    if (!file.read(base + tail, qint64(count) * kEntryBytes3D)) return false;
    const uchar* in = base + tail;
    for (int k = 0; k < count; ++k, in += kEntryBytes3D)
        if (!storeEntry(points[k], in, false)) return false;
    return true;
}

bool readRect(ZNByteSource& file, geom::Rect2d& rect)
{
    uchar raw[kRectBytes];
    if (!file.read(raw, kRectBytes)) return false;
    rect = geom::Rect2d(getReal(raw), getReal(raw + kRealBytes), getReal(raw + 2 * kRealBytes),
                        getReal(raw + 3 * kRealBytes));
    return true;
}

// True when following fathers from any patch ends at a patch that is its own father:
// the patches form trees, without loops. Fathers are patch ids.
bool isForest(const core::Array<int>& fathers)
{
    const int n = fathers.size();
    core::Array<int> walk;  // 1 + the first patch of the walk that reached each patch
    if (!walk.fill(n, 0)) return false;
    for (int i = 0; i < n; ++i) {
        int k = i;
        while (walk[k] == 0) {
            walk[k] = i + 1;
            if (fathers[k] == k) break;
            k = fathers[k];
        }
        if (walk[k] == i + 1 && fathers[k] != k) return false;  // back on this walk
    }
    return true;
}

} // namespace

// ----- header -----

QDomElement ZNFaultPatchManager::createHeader(QDomDocument& doc) const { return writeHeader(doc); }

template <class Document>
auto ZNFaultPatchManager::writeHeader(Document& doc) const -> decltype(doc.createElement(QString()))
{
    auto e = doc.createElement(getZNObjectType());
    ZNXml::appendInt(doc, e, kNumberOfPatch, getNumberOfPatch());
    ZNXml::appendInt(doc, e, kVersion, kLastVersion);
    ZNXml::appendInt(doc, e, kDimX, m_blocSpace.nx());
    ZNXml::appendInt(doc, e, kDimY, m_blocSpace.ny());
    ZNXml::appendInt(doc, e, kDimZ, m_blocSpace.nz());
    ZNXml::appendMatrix(doc, e, kMatrix, m_blocSpace.getFromBlocToWorldMatrix());
    ZNXml::appendBool(doc, e, kPicked, m_picked);
    ZNXml::appendBool(doc, e, kWithMesh, m_withMesh);
    e.appendChild(getUnitObjectFromMiddlePatch().createElement(doc, kUnitsObject));
    for (const ZN3DFaultPatchLight* light : m_faultLights) e.appendChild(light->createHeader(doc));
    for (const ZNFaultPatch& patch : m_patches) e.appendChild(patch.createHeader(doc));
    return e;
}

bool ZNFaultPatchManager::getHeader(const QDomElement* header)
{
    return getPickedFaultHeader(header, kNoProgressBar);
}

struct ZNFaultPatchManager::HeaderParts {
    std::vector<std::unique_ptr<ZN3DFaultPatchLight>> lights;  // in file order
    std::vector<georef::Crs> patchCrs;                         // of each patch element
    // Looked up once for all the descriptors.
    std::optional<bool> viewerPickingIntersection = ZN3DFaultPatchLight::viewerPickingIntersection();

    // Reads one "ZN3DFaultPatchLight" or "ZNFaultPatch" element; others are ignored.
    template <class Element>
    void add(const Element& e)
    {
        const QString tag = e.tagName();
        if (tag == kFaultLightTag) {
            lights.push_back(std::make_unique<ZN3DFaultPatchLight>());
            lights.back()->getHeader(&e, viewerPickingIntersection);
        } else if (tag == kPatchTag) {
            ZNFaultPatch patch;
            patch.getHeader(&e);
            patchCrs.push_back(patch.unitObject().getCrs());
        }
    }
};

bool ZNFaultPatchManager::getPickedFaultHeader(const QDomElement* header, int progressParent)
{
    if (!header || header->isNull()) return refuse(QStringLiteral("no fault set header"));
    HeaderParts parts;
    for (QDomElement e = header->firstChildElement(); !e.isNull(); e = e.nextSiblingElement())
        parts.add(e);
    return applyHeader(*header, parts, progressParent);
}

template <class Element>
bool ZNFaultPatchManager::applyHeader(const Element& header, HeaderParts& parts, int progressParent)
{
    const QString type = header.tagName();
    if (type != kPickedType && type != kAutomaticType)
        return refuse(QStringLiteral("the object is a %1, not a fault set").arg(type));
    bool found = false;
    const int version = ZNXml::readIntInRange(header, kVersion, kLastVersion, 0, kLastVersion, &found);
    if (!found)
        return refuse(QStringLiteral("unknown fault set version \"%1\"")
                          .arg(ZNXml::readString(header, kVersion)));
    const int patchElements = static_cast<int>(parts.patchCrs.size());
    const int n = ZNXml::readIntInRange(header, kNumberOfPatch, 0, 1, patchElements, &found);
    if (!found) return refuse(QStringLiteral("the header holds no usable patch count"));

    init(n, true);
    m_picked = ZNXml::readBool(header, kPicked, type == kPickedType);
    m_version = version;
    m_withMesh = ZNXml::readBool(header, kWithMesh, false);
    m_blocSpace = georef::BlocSpace(ZNXml::readIntInRange(header, kDimX, 0, 0, INT_MAX),
                                    ZNXml::readIntInRange(header, kDimY, 0, 0, INT_MAX),
                                    ZNXml::readIntInRange(header, kDimZ, 0, 0, INT_MAX));
    // A singular matrix is refused by the block space, which keeps the identity.
    m_blocSpace.setFromBlocToWorldMatrix(ZNXml::readMatrix(header, kMatrix, core::mat4()));
    SetUnitObjectToAllPatch(georef::UnitObject::fromElement(header.firstChildElement(kUnitsObject)));
    for (int i = 0; i < n; ++i) {
        georef::UnitObject units = m_patches[i].unitObject();
        units.setCrs(parts.patchCrs[i]);
        m_patches[i].SetUnitObject(units);
    }

    const int lights = static_cast<int>(parts.lights.size());
    ZNStridedProgress progress(kLoadData, lights, progressParent);
    for (int k = 0; k < lights; ++k) {
        const int id = parts.lights[k]->getFaultId();
        if (!isValidPatchId(id))
            return refuse(QStringLiteral("a descriptor names patch %1 of %2").arg(id).arg(n));
        appendFaultLight(parts.lights[k].release());
        if (progress.next()) return false;
    }
    return true;
}

// ----- data block -----

bool ZNFaultPatchManager::writeData(QIODevice& file, qint64 offset) const
{
    return writePickedFaultData(file, offset, true, nullptr, false);
}

bool ZNFaultPatchManager::writePickedFaultData(QIODevice& file, qint64 offset, bool twoD,
                                               QList<ZN3DFaultPatch*>* meshes,
                                               bool showProgress) const
{
    const int n = getNumberOfPatch();
    core::Array<uchar> buffer(kBufferGrowth);
    if (!file.seek(offset) || !buffer.resize(n * kIntBytes)) return reportWriteFailure();
    uchar* out = buffer.data();
    for (const ZNFaultPatch& patch : m_patches) out = putInt(out, patch.getFather());
    if (!writeAll(file, buffer)) return reportWriteFailure();
    ZNEventBus::sendMessage(ZNEventBus::Progress, kWritingPoints);

    ZNStridedProgress progress(kSaveTitle, n, showProgress ? -1 : ZNStridedProgress::kNoBar);
    const bool counted = m_pickedPoints.hasCountArray();
    for (int i = 0; i < n; ++i) {
        const int count = counted ? m_pickedPoints.getCount(i) : core::kNoValue;
        if (!encodePatch(count, m_pickedPoints.getArray(i), m_patches[i].getRect(), twoD, buffer) ||
            !writeAll(file, buffer))
            return reportWriteFailure();
        if (progress.next()) return false;
    }
    const bool withMeshes = m_withMesh && meshes && meshes->size() == m_faultLights.size();
    if (withMeshes && !writeMesh(file, *meshes)) return reportWriteFailure();
    return true;
}

bool ZNFaultPatchManager::readPickedFaultData(ZNByteSource& file, qint64 offset, bool twoD,
                                              int progressParent)
{
    if (!readPatchData(file, offset, twoD, progressParent)) return false;
    ZNProcess::sendActionToMdi(kUpdateDisplayCrs, this);
    return true;
}

bool ZNFaultPatchManager::readPatchData(ZNByteSource& file, qint64 offset, bool twoD,
                                        int progressParent)
{
    const int n = getNumberOfPatch();
    ZNStridedProgress progress(kLoadData, n, progressParent);
    bool ok = file.seek(offset) ? readFathers(file) : refuse(QStringLiteral("no data block"));
    for (int i = 0; ok && i < n; ++i) ok = readPatchEntries(file, i, twoD) && !progress.next();
    if (ok) m_pickedPoints.compact();
    if (ok && m_withMesh && file.remaining() != 0)
        ok = readMesh(file) || refuse(QStringLiteral("the mesh section is corrupt"));
    // Fathers may have changed even when the read failed: the lists follow them.
    initElementListBis();
    fillFaultLightListPatchList();
    if (ok)
        for (ZN3DFaultPatchLight* light : m_faultLights) light->setSaved(true);
    return ok;
}

bool ZNFaultPatchManager::readFathers(ZNByteSource& file)
{
    const int n = getNumberOfPatch();
    core::Array<uchar> raw;
    core::Array<int> fathers;
    if (n > INT_MAX / kIntBytes || !file.mayHold(qint64(n) * kIntBytes) || !raw.resize(n * kIntBytes) ||
        !file.read(raw.data(), raw.size()) || !fathers.resize(n))
        return refuse(QStringLiteral("the fathers of the %1 patches are cut short").arg(n));
    for (int i = 0; i < n; ++i) {
        fathers[i] = qFromLittleEndian<qint32>(raw.data() + i * kIntBytes);
        if (fathers[i] < 0 || fathers[i] >= n)
            return refuse(QStringLiteral("patch %1 has father %2").arg(i).arg(fathers[i]));
    }
    if (!isForest(fathers)) return refuse(QStringLiteral("the fathers of the patches close a loop"));
    for (int i = 0; i < n; ++i) m_patches[i].setFather(fathers[i]);
    return true;
}

bool ZNFaultPatchManager::readPatchEntries(ZNByteSource& file, int id, bool twoD)
{
    uchar countBytes[kIntBytes];
    if (!file.read(countBytes, kIntBytes))
        return refuse(QStringLiteral("the count of patch %1 is cut short").arg(id));
    const qint32 count = qFromLittleEndian<qint32>(countBytes);
    if (count < 0 || count > kMaxPickedPointsPerPatch)
        return refuse(QStringLiteral("patch %1 claims %2 entries").arg(id).arg(count));

    const bool form2D = twoD && m_version >= kFirstVersionWithForms;
    const qint64 bytes = qint64(count) * (form2D ? kEntryBytes2D : kEntryBytes3D) +
                         (form2D ? kRectBytes : 0);
    if (!file.mayHold(bytes) || !m_pickedPoints.setArraySize(id, count, true))
        return refuse(QStringLiteral("the %1 entries of patch %2 are cut short").arg(count).arg(id));
    core::PointWithBool* points = m_pickedPoints.getArray(id);
    geom::Rect2d rect;
    const bool read = form2D ? read2DEntries(file, points, count) && readRect(file, rect)
                             : read3DEntries(file, points, count);
    if (!read) {
        m_pickedPoints.clearArray(id);
        return refuse(QStringLiteral("the entries of patch %1 cannot be read").arg(id));
    }
    if (form2D) m_patches[id].setRect(rect);
    if (m_version >= kFirstVersionWithForms) m_patches[id].setIs2dFaultPatch(twoD);
    if (m_version == kBlockIndexVersion)
        for (int k = 0; k < count; ++k)
            if (!points[k].isSeparator())
                points[k] = core::PointWithBool(m_blocSpace.blocToWorld(points[k].position()));
    return true;
}

// ----- whole files -----

bool ZNFaultPatchManager::writePickedFault(const QString& path, bool twoD,
                                           QList<ZN3DFaultPatch*>* meshes, bool showProgress)
{
    if (!checkFaultNames()) return false;
    // The writer puts everything in a file beside the target; without commit() the
    // target is not touched, so a failed or cancelled write leaves it as it was.
    // The header is built as a flat tree: a DOM document of one element per fault and per
    // patch costs more than the data itself.
    ZNXmlTree header;
    ZNObjectFile::createHeaderDocument(header).appendChild(writeHeader(header));
    ZNObjectFileWriter writer(path);
    const qint64 offset = writer.create(header.toByteArray(), kHeaderReserve);
    if (offset < 0 || !writePickedFaultData(*writer.device(), offset, twoD, meshes, showProgress) ||
        !writer.commit())
        return false;
    for (ZN3DFaultPatchLight* light : m_faultLights) light->setSaved(true);
    return true;
}

bool ZNFaultPatchManager::readPickedFault(const QString& path, bool twoD, int progressParent)
{
    ZNFdReader file(ZNFdReader::openForReading(ZNObjectFile::platformPath(path)));
    if (!file.isOpen()) {
        ZNEventBus::sendMessage(ZNEventBus::FileError, QStringLiteral("Error when opening ") + path);
        return false;
    }
    return readPickedFault(file, twoD, progressParent);
}

bool ZNFaultPatchManager::readPickedFault(ZNByteSource& file, bool twoD, int progressParent)
{
    // The header is read as a flat tree: a DOM document of one element per fault and per
    // patch costs more than the data itself.
    ZNObjectFile::TreeHeader read;
    if (!ZNObjectFile::readHeader(file, read))
        return refuse(QStringLiteral("no object file header can be read"));
    const ZNXmlElement& header = read.objectHeader;
    const qint64 dataOffset = read.dataOffset;
    // The patch count must fit the data before a patch is allocated.
    const int claimed = ZNXml::readIntInRange(header, kNumberOfPatch, 0, 1, INT_MAX);
    if (!file.seek(dataOffset) || !file.mayHold(qint64(claimed) * kMinBytesPerPatch))
        return refuse(QStringLiteral("the data block cannot hold %1 patches").arg(claimed));

    HeaderParts parts;
    for (ZNXmlElement e = header.firstChildElement(); !e.isNull(); e = e.nextSiblingElement())
        parts.add(e);
    // Read into a fault set of its own, so that a failure leaves this one as it was.
    ZNFaultPatchManager set;
    if (!set.applyHeader(header, parts, progressParent) ||
        !set.readPatchData(file, dataOffset, twoD, progressParent))
        return false;
    takeModelFrom(set);
    ZNProcess::sendActionToMdi(kUpdateDisplayCrs, this);
    return true;
}

void ZNFaultPatchManager::takeModelFrom(ZNFaultPatchManager& other)
{
    m_blocSpace = other.m_blocSpace;
    m_picked = other.m_picked;
    m_version = other.m_version;
    m_withMesh = other.m_withMesh;
    m_storedMeshes.swap(other.m_storedMeshes);
    m_patches.swap(other.m_patches);
    m_pickedPoints.swap(other.m_pickedPoints);
    m_patchVoxels.swap(other.m_patchVoxels);
    m_nextInFault.swap(other.m_nextInFault);
    m_faultLights.swap(other.m_faultLights);
    m_lightIndexCurrent = other.m_lightIndexCurrent = false;
    m_visitStamps.fill(getNumberOfPatch(), m_currentStamp);
    m_workingPatchList.clear();
    m_currentPickedFaultId = core::kNoValue;
    m_currentMovingPointId = core::kNoValue;
    for (auto& counters : m_autoSaveCounters) counters[0] = counters[1] = 0;
    clearUndoConfigurationList();
}

bool ZNFaultPatchManager::checkFaultNames() const
{
    for (const ZN3DFaultPatchLight* light : m_faultLights) {
        const QString name = light->GetFaultName();
        if (ZNFileName::isAcceptable(name)) continue;
        ZNMessageBox::warning(kNameErrorTitle, QStringLiteral("Fault named ") +
                                                   ZNFileName::describeProblem(name) + kNameErrorEnd);
        return false;
    }
    return true;
}
