// Automatic fault sets built from label volumes: one patch per label, further patches
// for labels too large for one voxel box, the voxels of every patch as byte offsets from
// its origin, and the lateral contacts between patches.
#include "znfaultpatchmanager.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <utility>

#include <core/conventions.h>
#include <zn3dimage.h>
#include <zneventbus.h>
#include <znprogressbarmgr.h>

#include "labelledsamples.h"
#include "znlabelslabreader.h"

namespace {

constexpr int kMaxGridIndex = 32767;        // patch origins are 16-bit grid indices
constexpr int kMaxLabel = INT_MAX / 4;      // keeps every patch count within int
constexpr int kMaxByteOffset = 127;         // |voxel - origin| along each axis
constexpr int kContactChunk = 64;           // slice pairs scored in parallel at a time
constexpr int kFoundGrowth = 4096;          // growth of the per-pair contact buffers

// What the first pass learns of one label.
struct LabelExtent {
    long long count = 0;         // voxels
    core::Triplet min, max;      // bounding box, grid indices
    core::Triplet first;         // first voxel in scan order
};

// How the voxels of one label are shared among patches: a grid of kVoxelBoxSize boxes
// anchored at the label's lowest corner. A label whose box fits in one box has no table.
struct LabelBoxes {
    core::Triplet anchor;             // lowest corner of the label's voxels
    core::Triplet dims{1, 1, 1};      // boxes along each axis
    int tableOffset = -1;             // first entry in the box tables, -1 for one box
};

// The labelled stretch of every row (y, z) of a label volume, learnt by the first pass so
// that the later ones read only those stretches: patches fill about a hundredth of a
// likelihood volume in thin sheets, which cross most rows over a quarter of their length.
class RowSpans {
public:
    // Room for ny x nz rows, each without labels; false when memory runs out. Spans never
    // allocated (or whose allocation failed) cover whole rows.
    bool allocate(int ny, int nz)
    {
        m_ny = ny;
        const std::size_t rows = static_cast<std::size_t>(ny) * static_cast<std::size_t>(nz);
        m_spans.reset(new (std::nothrow) Span[rows]());
        return m_spans != nullptr;
    }
    // Row (y, z) holds labels in [begin, end) only.
    void set(int y, int z, int begin, int end)
    {
        if (m_spans) m_spans[rowOf(y, z)] = {static_cast<std::uint16_t>(begin), static_cast<std::uint16_t>(end)};
    }
    // The part of [lo, hi) of row (y, z) that may hold labels: [first, second), empty
    // when first >= second.
    std::pair<int, int> within(int y, int z, int lo, int hi) const
    {
        if (!m_spans) return {lo, hi};
        const Span& span = m_spans[rowOf(y, z)];
        return {std::max<int>(lo, span.begin), std::min<int>(hi, span.end)};
    }

private:
    struct Span {
        std::uint16_t begin, end;  // x < 32768 (kMaxGridIndex)
    };
    std::size_t rowOf(int y, int z) const
    {
        return static_cast<std::size_t>(y) + static_cast<std::size_t>(m_ny) * static_cast<std::size_t>(z);
    }

    std::unique_ptr<Span[]> m_spans;
    int m_ny = 0;
};

// Which patch each labelled voxel belongs to.
class LabelPatchMap {
public:
    static constexpr int kBox = ZNFaultPatchManager::kVoxelBoxSize;

    int largestLabel = 0;
    core::Array<LabelExtent> extents{1024};   // by label, 0..largestLabel
    core::Array<LabelBoxes> boxes{1024};      // by label
    core::Array<int> boxPatch{256};           // patch of each box of a many-box label, 0 if empty
    core::Array<int> boxCount{256};           // voxels of each such box
    int additionalPatches = 0;                // patches beyond the label patches
    RowSpans spans;                           // where the rows hold labels

    int boxIndex(const LabelBoxes& b, int x, int y, int z) const
    {
        const int bx = (x - b.anchor.x) / kBox;
        const int by = (y - b.anchor.y) / kBox;
        const int bz = (z - b.anchor.z) / kBox;
        return bx + b.dims.x * (by + b.dims.y * bz);
    }
    // The patch of a voxel holding `label`; 0 for no patch.
    int patchOf(int label, int x, int y, int z) const
    {
        if (label < 1 || label > largestLabel) return 0;
        const LabelBoxes& b = boxes[label];
        if (b.tableOffset < 0) return label;
        return boxPatch[b.tableOffset + boxIndex(b, x, y, z)];
    }
    // The lowest corner of box `index` of a label.
    core::Triplet boxOrigin(const LabelBoxes& b, int index) const
    {
        const int bx = index % b.dims.x;
        const int by = (index / b.dims.x) % b.dims.y;
        const int bz = index / (b.dims.x * b.dims.y);
        return {b.anchor.x + kBox * bx, b.anchor.y + kBox * by, b.anchor.z + kBox * bz};
    }
};

// Calls fn(z, slice) for every slice of the volume, slab after slab. False on a read error.
template <class Fn>
bool forEachSlice(ZNLabelSlabReader& labels, Fn fn)
{
    for (int z0 = 0; z0 < labels.nz(); z0 += labels.slabDepth()) {
        if (!labels.load(z0, labels.slabDepth())) return false;
        const int end = std::min(labels.nz(), z0 + labels.slabDepth());
        for (int z = z0; z < end; ++z) fn(z, labels.slice(z));
    }
    return true;
}

// Grows `extents` so that `label` is an index; false when memory runs out.
bool coverLabel(core::Array<LabelExtent>& extents, int label)
{
    if (label < extents.size()) return true;
    const long long doubled = std::min<long long>(2LL * extents.size(), kMaxLabel + 1LL);
    const int size = static_cast<int>(std::max<long long>(label + 1LL, doubled));
    return extents.resize(size);
}

// First pass: largest label and each label's count, box and first voxel. The reason of
// a failure goes to `why`.
bool scanExtents(ZNLabelSlabReader& labels, LabelPatchMap& map, QString& why)
{
    const int nx = labels.nx();
    const int ny = labels.ny();
    bool ok = true;
    map.spans.allocate(ny, labels.nz());  // without them, later passes read whole rows
    const bool read = forEachSlice(labels, [&](int z, const int* slice) {
        for (int y = 0; ok && y < ny; ++y) {
            int begin = nx, end = 0;
            ok = fault::forEachLabelled(slice + nx * y, 0, nx, [&](int x, int label) {
                begin = std::min(begin, x);
                end = x + 1;
                if (label > kMaxLabel || !coverLabel(map.extents, label)) {
                    why = QStringLiteral("label %1 is too large").arg(label);
                    return false;
                }
                LabelExtent& e = map.extents[label];
                const core::Triplet p(x, y, z);
                if (e.count++ == 0) {
                    e.min = e.max = e.first = p;
                    map.largestLabel = std::max(map.largestLabel, label);
                    return true;
                }
                e.min = {std::min(e.min.x, x), std::min(e.min.y, y), std::min(e.min.z, z)};
                e.max = {std::max(e.max.x, x), std::max(e.max.y, y), std::max(e.max.z, z)};
                return true;
            });
            map.spans.set(y, z, std::min(begin, end), end);
        }
    });
    if (!read && ok) why = QStringLiteral("the label volume could not be read");
    return read && ok;
}

// Gives every label too large for one box its table of boxes. False when memory runs out.
bool planBoxes(LabelPatchMap& map, bool& anyTable)
{
    anyTable = false;
    if (!map.boxes.resize(map.largestLabel + 1)) return false;
    constexpr int kBox = LabelPatchMap::kBox;
    for (int label = 1; label <= map.largestLabel; ++label) {
        const LabelExtent& e = map.extents[label];
        if (e.count == 0) continue;
        LabelBoxes& b = map.boxes[label];
        b.anchor = e.min;
        b.dims = {(e.max.x - e.min.x) / kBox + 1, (e.max.y - e.min.y) / kBox + 1,
                  (e.max.z - e.min.z) / kBox + 1};
        if (b.dims.x == 1 && b.dims.y == 1 && b.dims.z == 1) continue;
        const long long boxCount = 1LL * b.dims.x * b.dims.y * b.dims.z;
        const long long size = map.boxPatch.size() + boxCount;
        if (size > INT_MAX || !map.boxPatch.resize(static_cast<int>(size)) ||
            !map.boxCount.resize(static_cast<int>(size)))
            return false;
        b.tableOffset = static_cast<int>(size - boxCount);
        map.boxPatch[b.tableOffset + map.boxIndex(b, e.first.x, e.first.y, e.first.z)] = label;
        anyTable = true;
    }
    return true;
}

// Second pass, for labels with a table: counts each box and numbers the boxes other than
// the first one as additional patches, after the label patches, in scan order.
bool numberAdditionalPatches(ZNLabelSlabReader& labels, LabelPatchMap& map)
{
    const int nx = labels.nx();
    const int ny = labels.ny();
    int next = map.largestLabel + 1;
    const bool read = forEachSlice(labels, [&](int z, const int* slice) {
        for (int y = 0; y < ny; ++y) {
            const auto [begin, end] = map.spans.within(y, z, 0, nx);
            fault::forEachLabelled(slice + nx * y, begin, end, [&](int x, int label) {
                const LabelBoxes& b = map.boxes[label];
                if (b.tableOffset < 0) return true;
                const int entry = b.tableOffset + map.boxIndex(b, x, y, z);
                if (map.boxPatch[entry] == 0) map.boxPatch[entry] = next++;
                ++map.boxCount[entry];
                return true;
            });
        }
    });
    map.additionalPatches = next - (map.largestLabel + 1);
    return read;
}

// Sets the origin of every patch, makes each additional patch a child of its label's
// patch and reserves room for every voxel. False when memory runs out.
bool placePatches(ZNFaultPatchManager& set, const LabelPatchMap& map)
{
    core::MultiArray<core::ByteTriplet>& voxels = set.getPatchVoxels();
    for (int label = 1; label <= map.largestLabel; ++label) {
        const LabelExtent& e = map.extents[label];
        const LabelBoxes& b = map.boxes[label];
        if (e.count == 0) continue;
        if (b.tableOffset < 0) {
            set.getFaultPatch(label)->setOrigin(e.min.x, e.min.y, e.min.z);
            if (!voxels.setArraySize(label, static_cast<int>(e.count), false)) return false;
            continue;
        }
        const int boxes = b.dims.x * b.dims.y * b.dims.z;
        for (int i = 0; i < boxes; ++i) {
            const int patch = map.boxPatch[b.tableOffset + i];
            if (patch == 0) continue;
            const core::Triplet o = map.boxOrigin(b, i);
            set.getFaultPatch(patch)->setOrigin(o.x, o.y, o.z);
            set.setFather(patch, label);
            if (!voxels.setArraySize(patch, map.boxCount[b.tableOffset + i], false)) return false;
        }
    }
    return true;
}

// Stores every labelled voxel in its patch, as offsets from the patch's origin (0..127 by
// construction), in scan order. False on a read error.
bool fillVoxels(ZNFaultPatchManager& set, ZNLabelSlabReader& labels, const LabelPatchMap& map)
{
    core::MultiArray<core::ByteTriplet>& voxels = set.getPatchVoxels();
    const int nx = labels.nx();
    const int ny = labels.ny();
    return forEachSlice(labels, [&](int z, const int* slice) {
        for (int y = 0; y < ny; ++y) {
            const auto [begin, end] = map.spans.within(y, z, 0, nx);
            fault::forEachLabelled(slice + nx * y, begin, end, [&](int x, int label) {
                const int patch = map.patchOf(label, x, y, z);
                if (patch != 0) voxels.addElement(patch, set.getPatchPointByteTriplet(patch, {x, y, z}), false);
                return true;
            });
        }
    });
}

// The (patch, neighbour patch) pairs met from the interior pixels of slice z towards
// their six forward neighbours, in scan order, consecutive repeats dropped (they would
// change nothing). `patchOf(label, x, y, z)` gives a voxel's patch, 0 for none; `spans`,
// where the rows of slice z hold labels.
template <class PatchOf>
bool forwardContacts(const int* slice, const int* next, int w, int h, int z, int patchCount,
                     const PatchOf& patchOf, const RowSpans& spans, core::Array<core::Duplet>& found)
{
    struct Step { int dx, dy, dz; };
    static constexpr Step kForward[6] = {{1, 0, 0}, {1, -1, 0}, {1, 1, 0},
                                         {0, 0, 1}, {0, -1, 1}, {0, 1, 1}};
    found.clear();
    for (int y = 1; y <= h - 2; ++y) {
        const auto [begin, end] = spans.within(y, z, 1, w - 1);
        const bool rowDone = fault::forEachLabelled(slice + w * y, begin, end, [&](int x, int label) {
            const int patch = patchOf(label, x, y, z);
            if (patch < 1 || patch >= patchCount) return true;
            for (const Step& s : kForward) {
                const int* plane = s.dz == 0 ? slice : next;
                const int other = plane[(x + s.dx) + w * (y + s.dy)];
                if (other < 1) continue;
                const int neighbour = patchOf(other, x + s.dx, y + s.dy, z + s.dz);
                if (neighbour < 1 || neighbour == patch) continue;
                const core::Duplet pair(patch, neighbour);
                if ((found.empty() || found.last() != pair) && !found.add(pair)) return false;
            }
            return true;
        });
        if (!rowDone) return false;
    }
    return true;
}

// The lateral contact pass over every slice pair, slab after slab; pairs are scored a
// chunk at a time in parallel and recorded in slice order, as a single thread would.
// `step()` is called after each pair and returns true to stop (cancel).
template <class PatchOf, class Record, class Step>
bool lateralContactPass(ZNLabelSlabReader& labels, int patchCount, const PatchOf& patchOf,
                        const RowSpans& spans, Record record, Step step, bool& stopped)
{
    const int w = labels.nx();
    const int h = labels.ny();
    const int lastPair = labels.nz() - 2;  // pairs (s, s + 1) for s in 0..lastPair
    core::Array<core::Duplet> found[kContactChunk];
    for (core::Array<core::Duplet>& f : found) f.setGrowthStep(kFoundGrowth);
    stopped = false;
    for (int z0 = 0; z0 <= lastPair && !stopped; z0 += labels.slabDepth()) {
        if (!labels.load(z0, labels.slabDepth() + 1)) return false;
        const int slabEnd = std::min(lastPair + 1, z0 + labels.slabDepth());
        for (int c0 = z0; c0 < slabEnd && !stopped; c0 += kContactChunk) {
            const int chunk = std::min(kContactChunk, slabEnd - c0);
            int failures = 0;
#pragma omp parallel for schedule(dynamic, 1) reduction(+ : failures)
            for (int k = 0; k < chunk; ++k) {
                const int s = c0 + k;
                if (!forwardContacts(labels.slice(s), labels.slice(s + 1), w, h, s, patchCount,
                                     patchOf, spans, found[k]))
                    ++failures;
            }
            if (failures > 0) return false;
            for (int k = 0; k < chunk && !stopped; ++k) {
                for (const core::Duplet& pair : found[k]) record(pair);
                stopped = step();
            }
        }
    }
    return true;
}

bool failInit(const QString& why)
{
    ZNEventBus::sendMessage(ZNEventBus::Error,
                            QStringLiteral("Cannot build faults from the label volume: ") + why);
    return false;
}

const QString kLateralContactTitle = QStringLiteral("Get Lateral Contact");

} // namespace

// ----- construction from labels -----

bool ZNFaultPatchManager::init(const ZN3DImage<int>* labelImage)
{
    ZNLabelSlabReader labels(labelImage);
    return initFromLabels(labels);
}

bool ZNFaultPatchManager::init(ZNBloc* labelBloc, int slabDepth)
{
    ZNLabelSlabReader labels(labelBloc, slabDepth);
    return initFromLabels(labels);
}

bool ZNFaultPatchManager::init(ZNLabelRecordFile* labelRecords, int slabDepth)
{
    ZNLabelSlabReader labels(labelRecords, slabDepth);
    return initFromLabels(labels);
}

bool ZNFaultPatchManager::initFromLabels(ZNLabelSlabReader& labels)
{
    const auto fail = [this](const QString& why) {
        init(kInitialNumberOfPatch, true);
        m_picked = false;
        return failInit(why);
    };
    if (!labels.isUsable()) return fail(QStringLiteral("no readable volume"));
    if (labels.nx() > kMaxGridIndex + 1 || labels.ny() > kMaxGridIndex + 1 ||
        labels.nz() > kMaxGridIndex + 1)
        return fail(QStringLiteral("grid indices beyond %1").arg(kMaxGridIndex));

    LabelPatchMap map;
    QString why;
    if (!scanExtents(labels, map, why)) return fail(why);
    if (map.largestLabel < 1) return fail(QStringLiteral("the volume holds no label"));
    bool anyTable = false;
    if (!planBoxes(map, anyTable)) return fail(QStringLiteral("not enough memory"));
    if (anyTable && !numberAdditionalPatches(labels, map))
        return fail(QStringLiteral("the label volume could not be read"));

    const long long patchCount = map.largestLabel + 2LL + map.additionalPatches;
    if (patchCount > INT_MAX || !m_patches.reserve(static_cast<int>(patchCount)) ||
        !m_visitStamps.reserve(static_cast<int>(patchCount)) ||
        !m_nextInFault.reserve(static_cast<int>(patchCount)))
        return fail(QStringLiteral("not enough memory for %1 patches").arg(patchCount));
    const int n = static_cast<int>(patchCount);
    init(n, true);
    if (getNumberOfPatch() != n || m_patchVoxels.getNumberOfArray() != n)
        return fail(QStringLiteral("not enough memory for %1 patches").arg(n));
    m_picked = false;
    m_blocSpace = labels.blocSpace();

    if (!placePatches(*this, map)) return fail(QStringLiteral("not enough memory for the voxels"));
    initElementListBis();
    if (!fillVoxels(*this, labels, map))
        return fail(QStringLiteral("the label volume could not be read"));

    // Lateral contacts between patches, then the patch parameters.
    m_contacts.init(n, m_allocSize);
    ZNEventBus::sendMessage(ZNEventBus::Detail, kLateralContactTitle);
    bool stopped = false;
    const auto patchOf = [&map](int label, int x, int y, int z) {
        return map.patchOf(label, x, y, z);
    };
    const bool contactsRead = lateralContactPass(
        labels, n, patchOf, map.spans, [this](const core::Duplet& p) { addContact(p.a, p.b); },
        [] { return false; }, stopped);
    if (!contactsRead) return fail(QStringLiteral("the contacts could not be read"));
    computePatchParameters();
    return true;
}

// ----- voxel encoding -----

bool ZNFaultPatchManager::testPatchPointByteTriplet(int patch, const core::Triplet& point) const
{
    const ZNFaultPatch* record = getFaultPatch(patch);
    if (!record) return false;
    int16_t ox, oy, oz;
    record->getOrigin(ox, oy, oz);
    if (ox == core::kNoValue || oy == core::kNoValue || oz == core::kNoValue) return false;
    return std::abs(point.x - ox) <= kMaxByteOffset && std::abs(point.y - oy) <= kMaxByteOffset &&
           std::abs(point.z - oz) <= kMaxByteOffset;
}

core::ByteTriplet ZNFaultPatchManager::getPatchPointByteTriplet(int patch,
                                                                const core::Triplet& point) const
{
    const ZNFaultPatch* record = getFaultPatch(patch);
    if (!record) return {};
    int16_t ox, oy, oz;
    record->getOrigin(ox, oy, oz);
    return {static_cast<int8_t>(point.x - ox), static_cast<int8_t>(point.y - oy),
            static_cast<int8_t>(point.z - oz)};
}

ZN3DImage<int>* ZNFaultPatchManager::createFaultLabelImage() const
{
    if (m_blocSpace.isEmpty()) return nullptr;
    auto* image = new (std::nothrow) ZN3DImage<int>(ZN3DImage<int>::unfilled(m_blocSpace));
    if (!image || image->isNull() || !fillFaultLabelSlab(0, *image)) {
        delete image;
        return nullptr;
    }
    return image;
}

namespace {

// True when `slab` holds slices z0 .. z0 + slab.nz() - 1 of `space`.
bool slabFits(const georef::BlocSpace& space, int z0, const ZN3DImage<int>& slab)
{
    return !slab.isEmpty() && slab.nx() == space.nx() && slab.ny() == space.ny() && z0 >= 0 &&
           slab.nz() <= space.nz() - z0;
}

// Calls fn(index in `slab`, fault id) for every patch voxel of `set` in the slices of
// `slab` from z0 (a slab that fits the set's block space).
template <class Fn>
void forEachFaultVoxelOfSlab(const ZNFaultPatchManager& set, int z0, const ZN3DImage<int>& slab, Fn fn)
{
    const int z1 = z0 + slab.nz();
    // Voxels are stored as offsets from their patch's origin: 0 .. 255 along x and y,
    // -128 .. 127 along z (see getVoxelPosition).
    constexpr int kBelow = 128, kAbove = 127;
    const core::MultiArray<core::ByteTriplet>& patchVoxels = set.getPatchVoxels();
    for (int patch = 0; patch < set.getNumberOfPatch(); ++patch) {
        const int count = patchVoxels.getCount(patch);
        const core::ByteTriplet* voxels = patchVoxels.getArray(patch);
        const ZNFaultPatch* record = set.getFaultPatch(patch);
        if (count <= 0 || !voxels || !record) continue;
        int16_t ox = 0, oy = 0, oz = 0;
        record->getOrigin(ox, oy, oz);
        if (oz + kAbove < z0 || oz - kBelow >= z1) continue;
        const int fault = set.getFather(patch);
        for (int k = 0; k < count; ++k) {
            const int x = ox + static_cast<uint8_t>(voxels[k].x);
            const int y = oy + static_cast<uint8_t>(voxels[k].y);
            const int z = oz + voxels[k].z - z0;
            if (slab.contains(x, y, z)) fn(slab.index(x, y, z), fault);
        }
    }
}

} // namespace

bool ZNFaultPatchManager::fillFaultLabelSlab(int z0, ZN3DImage<int>& slab, bool slabIsClear) const
{
    if (!slabFits(m_blocSpace, z0, slab)) return false;
    if (!slabIsClear) slab.fill(core::kNoValue);
    int* labels = slab.data();
    forEachFaultVoxelOfSlab(*this, z0, slab, [labels](std::size_t i, int fault) { labels[i] = fault; });
    return true;
}

bool ZNFaultPatchManager::clearFaultLabelSlab(int z0, ZN3DImage<int>& slab) const
{
    if (!slabFits(m_blocSpace, z0, slab)) return false;
    int* labels = slab.data();
    forEachFaultVoxelOfSlab(*this, z0, slab, [labels](std::size_t i, int) { labels[i] = core::kNoValue; });
    return true;
}

// ----- contacts -----

bool ZNFaultPatchManager::ensureContactLists()
{
    const int n = getNumberOfPatch();
    if (m_contacts.hasCountArray() && m_contacts.getNumberOfArray() == n) return true;
    if (!m_contacts.hasCountArray()) return m_contacts.init(n, m_allocSize);
    return m_contacts.setNumberOfArray(n);
}

int ZNFaultPatchManager::getNumberOfContact(int patch) const
{
    return m_contacts.getCount(patch);
}

int ZNFaultPatchManager::getContact(int patch, int k) const
{
    const int* contact = m_contacts.element(patch, k);
    return contact ? *contact : 0;
}

bool ZNFaultPatchManager::addContact(int a, int b)
{
    if (a == b || a < 1 || b < 1 || !ensureContactLists()) return false;
    if (!m_contacts.isValidIndex(a) || !m_contacts.isValidIndex(b)) return false;
    m_contacts.setGrowthStep(m_allocSize);
    m_contacts.addElement(a, b, true);
    m_contacts.addElement(b, a, true);
    return true;
}

void ZNFaultPatchManager::getLateralContact(const int* slice, const int* nextSlice, int width,
                                            int height)
{
    if (!slice || !nextSlice || width < 3 || height < 3 || !ensureContactLists()) return;
    core::Array<core::Duplet> found(kFoundGrowth);
    const auto sameLabel = [](int label, int, int, int) { return label; };
    forwardContacts(slice, nextSlice, width, height, 0, getNumberOfPatch(), sameLabel, RowSpans(), found);
    for (const core::Duplet& pair : found) addContact(pair.a, pair.b);
}

bool ZNFaultPatchManager::getLateralContact(const ZN3DImage<int>* labels, int progressParent)
{
    ZNLabelSlabReader reader(labels);
    if (!reader.isUsable() || !ensureContactLists()) return false;
    ZNEventBus::sendMessage(ZNEventBus::Detail, kLateralContactTitle);
    const int pairs = std::max(0, reader.nz() - 1);
    const int bar =
        ZNProgressBarMgr::createProgressBar(kLateralContactTitle, pairs, progressParent);
    const auto sameLabel = [](int label, int, int, int) { return label; };
    bool stopped = false;
    lateralContactPass(
        reader, getNumberOfPatch(), sameLabel, RowSpans(),
        [this](const core::Duplet& p) { addContact(p.a, p.b); },
        [bar] {
            ZNProgressBarMgr::incrementProgressBar(bar);
            return ZNProgressBarMgr::isProgressBarCancelled(bar);
        },
        stopped);
    ZNProgressBarMgr::closeProgressBar(bar);
    return !stopped;
}
