// Merging patches into faults: merge costs, the joining of two faults, and the two
// best-first drivers over direct patch contacts and over fault contacts.
#include "znfaultpatchmanager.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <unordered_map>

#include <core/conventions.h>
#include <zneventbus.h>

#include <znstridedprogress.h>

namespace {

constexpr double kHeapThresholdShare = 0.5;   // direct contacts are queued below T / 2
constexpr int kMaxProjectionSide = 2048;      // pixels; larger extents take larger pixels
constexpr int kNoStamp = -2147483647 - 1;     // pixels no projection has stamped
constexpr int kParallelChunk = 64;            // patches per OpenMP work item
constexpr int kMinParallelItems = 256;        // fewer items are not worth the threads
constexpr int kParallelBlock = 8192;          // items scored per parallel region, about

constexpr double kRadToDeg = 180.0 / M_PI;

const QString kInitialisationTitle = QStringLiteral("Merge Fault Patches Initialization");
const QString kMergeTitle = QStringLiteral("Merge Fault Patches");

// The dip rule compares the getDipAngleBis of two faults. The sign of a fitted normal is
// the eigen-solver's and may differ between two patches of one plane, which would make
// one plane look like two opposite dips; so the second normal is first turned to agree
// with the first. Where the solver orients both alike this is getDipAngleMergeCost.
double dipGap(const core::vec3& normalA, const core::vec3& normalB)
{
    const core::vec3 b = normalA.dot(normalB) < 0.0 ? -normalB : normalB;
    const double dipA = std::asin(normalA.y / normalA.length());
    const double dipB = std::asin(b.y / b.length());
    return std::fabs(dipA - dipB) * kRadToDeg;
}

// One queued contact found from a starting patch or fault.
struct Candidate {
    double cost;
    int other;
};

// The contacts from starting patch i that enter the direct-contact heap: j large enough,
// not a starting patch already passed (1..i-1), in another fault, cost below `maxCost`.
void scoreDirectContacts(const ZNFaultPatchManager& set, int i, double maxCost,
                         core::Array<Candidate>& out)
{
    out.clear();
    const int minimum = set.getMinimumPatchSize();
    const ZNFaultPatch* patch = set.getFaultPatch(i);
    if (!patch || patch->getNbPoint() < minimum) return;
    const int root = set.getFather(i);
    const int contacts = set.getNumberOfContact(i);
    for (int k = 0; k < contacts; ++k) {
        const int j = set.getContact(i, k);
        const ZNFaultPatch* other = set.getFaultPatch(j);
        if (!other || other->getNbPoint() < minimum) continue;
        if (j >= 1 && j < i) continue;  // visited: it was a starting patch before i
        if (set.getFather(j) == root) continue;
        const double cost = set.getMergeCost(*patch, *other);
        if (cost < maxCost) out.add({cost, j});
    }
}

// Scores items first..last and hands each item's candidates to `push` in item order,
// moving the bar after each of its strides; the same as scoring one item after the other.
// Items are scored in parallel a block of whole strides at a time, so that threads meet
// rarely. False when the bar was cancelled (the rest of the items are not handed over).
template <class Score, class Push>
bool scoreInStrides(int first, int last, ZNStridedProgress& bar, Score score, Push push)
{
    const int stride = static_cast<int>(bar.stride());
    const int block = std::max(1, kParallelBlock / stride) * stride;
    std::vector<core::Array<Candidate>> found(block);
    for (int start = first; start <= last; start += block) {
        const int count = std::min(block, last - start + 1);
#pragma omp parallel for schedule(dynamic, kParallelChunk) if (count >= kMinParallelItems)
        for (int k = 0; k < count; ++k) score(start + k, found[k]);
        for (int s = 0; s < count; s += stride) {
            for (int k = s; k < std::min(count, s + stride); ++k)
                for (const Candidate& c : found[k]) push(start + k, c);
            if (bar.move()) return false;
        }
    }
    return true;
}

// The last patch of each root's list (-1 for the other patches), so that a merge driver
// joins two lists in constant time.
void listTails(const ZNFaultPatchManager& set, core::Array<int>& tails)
{
    const int n = set.getNumberOfPatch();
    core::Array<int> list(64);
    tails.fill(n, -1);
    for (int root = 0; root < n; ++root) {
        if (set.getFather(root) != root) continue;
        set.getPatchListWithLinkedList(root, list, true);
        tails[root] = list.empty() ? root : list.last();
    }
}

// The points of each fault, at its root's index.
std::vector<long long> faultSizes(const ZNFaultPatchManager& set)
{
    const int n = set.getNumberOfPatch();
    std::vector<long long> size(n, 0);
    for (int i = 0; i < n; ++i) {
        const int root = set.getFather(i);
        if (root >= 0 && root < n) size[root] += set.getFaultPatch(i)->getNbPoint();
    }
    return size;
}

// The merged record and normal of each fault a merge driver has met, so that each test
// costs one eigen-solve instead of a pass over the fault's patches.
class FaultCache {
public:
    explicit FaultCache(const ZNFaultPatchManager& set)
        : m_set(set), m_slot(set.getNumberOfPatch(), -1)
    {
    }
    // The record of the whole fault of root `root`; its sums equal getMergedFaultPatch's
    // whenever they are exact (voxel patches: integer moments below 2^53).
    const ZNFaultPatch& record(int root)
    {
        return entry(root).record;
    }
    const core::vec3& normal(int root)
    {
        Entry& e = entry(root);
        if (!e.normalKnown) {
            e.normal = e.record.getNormal();
            e.normalKnown = true;
        }
        return e.normal;
    }
    // rootA has joined rootB, whose list now ends with rootA's.
    void joined(int rootA, int rootB)
    {
        Entry merged{record(rootB) + record(rootA), core::vec3(), false};
        m_entries[m_slot[rootB]] = merged;
        m_slot[rootA] = -1;
    }

private:
    struct Entry {
        ZNFaultPatch record;
        core::vec3 normal;
        bool normalKnown = false;
    };
    Entry& entry(int root)
    {
        if (m_slot[root] < 0) {
            m_slot[root] = static_cast<int>(m_entries.size());
            m_entries.push_back({m_set.getMergedFaultPatch(root), core::vec3(), false});
        }
        return m_entries[m_slot[root]];
    }

    const ZNFaultPatchManager& m_set;
    std::vector<int> m_slot;        // entry of each root, -1 when none
    std::deque<Entry> m_entries;    // a deque: references stay valid as it grows
};

// Brackets a merge driver with the merging-in-progress flag.
class MergingFlag {
public:
    explicit MergingFlag(bool& flag) : m_flag(flag) { m_flag = true; }
    ~MergingFlag() { m_flag = false; }

private:
    bool& m_flag;
};

} // namespace

// ----- costs and merged records -----

double ZNFaultPatchManager::getMergeCost(const ZNFaultPatch& a, const ZNFaultPatch& b) const
{
    // lambda3 is a variance: rounding may leave it a hair below 0 for coplanar points.
    return std::sqrt(std::max(0.0, (a + b).getSigma().z));
}

ZNFaultPatch ZNFaultPatchManager::getMergedFaultPatch(const core::Array<int>& patchList) const
{
    ZNFaultPatch merged;
    for (int id : patchList)
        if (const ZNFaultPatch* patch = getFaultPatch(id)) merged = merged + *patch;
    merged.setSamplingVect(getMergedSamplingVect(patchList));
    return merged;
}

ZNFaultPatch ZNFaultPatchManager::getMergedFaultPatch(int patch) const
{
    core::Array<int> list(64);
    getPatchListWithLinkedList(getFather(patch), list, true);
    return getMergedFaultPatch(list);
}

// ----- joining faults -----

int ZNFaultPatchManager::findRootCompressing(int id)
{
    const int n = getNumberOfPatch();
    const int root = getFather(id);
    if (id < 0 || id >= n || root < 0 || root >= n) return root;
    for (int k = id, steps = 0; k != root && steps < n; ++steps) {
        const int next = m_patches[k].getFather();
        m_patches[k].setFather(root);
        k = next;
    }
    return root;
}

void ZNFaultPatchManager::mergeRoots(int rootA, int rootB, core::Array<int>* tails)
{
    int tailB = rootB;
    if (tails) {
        tailB = (*tails)[rootB];
    } else {
        for (int steps = 0; m_nextInFault[tailB] >= 0 && steps < getNumberOfPatch(); ++steps)
            tailB = m_nextInFault[tailB];
    }
    m_nextInFault[tailB] = rootA;
    m_patches[rootA].setFather(rootB);
    if (tails) (*tails)[rootB] = (*tails)[rootA];
}

bool ZNFaultPatchManager::mergePatch(int a, int b)
{
    if (!isValidPatchId(a) || !isValidPatchId(b)) return false;
    const int rootA = findRootCompressing(a);
    const int rootB = findRootCompressing(b);
    if (rootA == rootB || !isValidPatchId(rootA) || !isValidPatchId(rootB)) return false;
    mergeRoots(rootA, rootB, nullptr);
    return true;
}

// ----- contact costs -----

void ZNFaultPatchManager::groupContactsByFault(int root, std::vector<FaultContacts>& groups) const
{
    groups.clear();
    std::unordered_map<int, int> slotOf;   // other fault -> index in groups
    core::Array<int> list(64);
    getPatchListWithLinkedList(root, list, true);
    for (int patch : list) {
        const int count = getNumberOfContact(patch);
        for (int k = 0; k < count; ++k) {
            const int other = getContact(patch, k);
            const int otherRoot = getFather(other);
            if (otherRoot == root) continue;
            auto found = slotOf.find(otherRoot);
            if (found == slotOf.end()) {
                found = slotOf.emplace(otherRoot, static_cast<int>(groups.size())).first;
                groups.push_back({otherRoot, core::Array<core::Duplet>(16)});
            }
            groups[found->second].pairs.add(core::Duplet(patch, other));
        }
    }
}

void ZNFaultPatchManager::getPatchContactArrayWithFault(int faultA, int faultB,
                                                        core::Array<core::Duplet>& contacts) const
{
    contacts.clear();
    const int rootA = getFather(faultA);
    const int rootB = getFather(faultB);
    if (rootA == rootB || !isValidPatchId(rootA) || !isValidPatchId(rootB)) return;
    std::vector<FaultContacts> groups;
    groupContactsByFault(rootA, groups);
    for (const FaultContacts& g : groups)
        if (g.fault == rootB) contacts = g.pairs;
}

void ZNFaultPatchManager::getConnexFault(int fault, core::Array<int>& faults) const
{
    faults.clear();
    if (!isValidPatchId(fault)) return;
    std::vector<FaultContacts> groups;
    groupContactsByFault(getFather(fault), groups);
    for (const FaultContacts& g : groups) faults.add(g.fault);
}

double ZNFaultPatchManager::getContactArrayPlanarMergeCost(
    const core::Array<core::Duplet>& contacts, bool max) const
{
    double sum = 0.0;
    double largest = core::kNoValueReal;
    int used = 0;
    for (const core::Duplet& pair : contacts) {
        const ZNFaultPatch* a = getFaultPatch(pair.a);
        const ZNFaultPatch* b = getFaultPatch(pair.b);
        if (!a || !b) continue;
        const double cost = getMergeCost(*a, *b);
        if (cost == core::kNoValueReal) continue;
        sum += cost;
        largest = used == 0 ? cost : std::max(largest, cost);
        ++used;
    }
    if (used == 0) return core::kNoValueReal;
    return max ? largest : sum / used;
}

double ZNFaultPatchManager::getContactArrayPlanarMergeCost(int faultA, int faultB, bool max) const
{
    core::Array<core::Duplet> contacts(64);
    getPatchContactArrayWithFault(faultA, faultB, contacts);
    return getContactArrayPlanarMergeCost(contacts, max);
}

// ----- direct-contact merging -----

bool ZNFaultPatchManager::getSortedDirectContact(core::Heap<core::Duplet>& heap, double maxCost,
                                                 int progressParent)
{
    heap.clear();
    const int n = getNumberOfPatch();
    ZNStridedProgress bar(kInitialisationTitle, n, progressParent);
    return scoreInStrides(
        1, n - 2, bar,
        [&](int i, core::Array<Candidate>& out) { scoreDirectContacts(*this, i, maxCost, out); },
        [&](int i, const Candidate& c) { heap.push(c.cost, core::Duplet(i, c.other)); });
}

bool ZNFaultPatchManager::fastContactMerging(double maxCost, int progressParent)
{
    MergingFlag flag(m_mergingInProgress);
    core::Heap<core::Duplet> heap;
    if (!getSortedDirectContact(heap, kHeapThresholdShare * maxCost, progressParent)) return false;

    core::Array<int> tails(kPatchGrowthStep);
    listTails(*this, tails);
    FaultCache faults(*this);
    ZNStridedProgress bar(kMergeTitle, heap.size(), progressParent);
    double cost = 0.0;
    core::Duplet pair;
    while (heap.pop(cost, pair)) {
        if (!bar.isCancelled()) {
            const int rootA = findRootCompressing(pair.a);
            const int rootB = findRootCompressing(pair.b);
            if (isValidPatchId(rootA) && isValidPatchId(rootB) && rootA != rootB) {
                const double spread = getMergeCost(faults.record(rootA), faults.record(rootB));
                const double gap = dipGap(faults.normal(rootA), faults.normal(rootB));
                if (spread <= maxCost && gap <= kMaxMergeDipDifference) {
                    mergeRoots(rootA, rootB, &tails);
                    faults.joined(rootA, rootB);
                }
            }
        }
        bar.next();
    }
    return !bar.isCancelled();
}

ZNFaultPatchManager::LeftoverOutcome ZNFaultPatchManager::settleCrossingLeftovers(int maxVoxels, double maxCost)
{
    LeftoverOutcome outcome;
    const int n = getNumberOfPatch();
    std::vector<long long> voxels(static_cast<std::size_t>(std::max(n, 0)), 0);
    for (int p = 1; p < n; ++p) {
        const int root = getFather(p);
        if (root >= 0 && root < n) voxels[static_cast<std::size_t>(root)] += m_patchVoxels.getCount(p);
    }
    core::Array<int> touching(16);
    core::Array<int> list(64);
    for (int root = 1; root < n; ++root) {
        if (getFather(root) != root || voxels[root] == 0 || voxels[root] > maxVoxels) continue;
        getConnexFault(root, touching);
        if (touching.size() < 2) continue;
        const ZNFaultPatch leftover = getMergedFaultPatch(root);
        double best = core::kNoValueReal;
        int into = -1;
        for (int other : touching) {
            const double cost = getMergeCost(leftover, getMergedFaultPatch(other));
            if (cost >= 0.0 && (into < 0 || cost < best)) {
                best = cost;
                into = other;
            }
        }
        if (into >= 0 && best <= maxCost) {
            mergeRoots(root, into, nullptr);
            voxels[static_cast<std::size_t>(into)] += voxels[root];
            ++outcome.joined;
            continue;
        }
        getPatchListWithLinkedList(root, list, true);
        for (int patch : list) {
            m_patchVoxels.clearArray(patch);
            getFaultPatch(patch)->clearParameters();
        }
        voxels[root] = 0;
        ++outcome.dropped;
    }
    return outcome;
}

// ----- fault-contact merging -----

bool ZNFaultPatchManager::getSortedFaultContact(core::Heap<core::Duplet>& heap, int minFaultSize,
                                                int minContactCount, double maxCost,
                                                int progressParent)
{
    heap.clear();
    const int n = getNumberOfPatch();
    const std::vector<long long> size = faultSizes(*this);
    const auto score = [&](int root, core::Array<Candidate>& out) {
        out.clear();
        if (getFather(root) != root || size[root] < minFaultSize) return;
        std::vector<FaultContacts> groups;
        groupContactsByFault(root, groups);
        for (const FaultContacts& g : groups) {
            if (g.fault <= root || g.fault >= n || size[g.fault] < minFaultSize ||
                g.pairs.size() < minContactCount)
                continue;
            const double cost = getContactArrayPlanarMergeCost(g.pairs, false);
            if (cost != core::kNoValueReal && cost <= maxCost) out.add({cost, g.fault});
        }
    };
    ZNStridedProgress bar(kInitialisationTitle, n, progressParent);
    return scoreInStrides(1, n - 2, bar, score, [&](int root, const Candidate& c) {
        heap.push(c.cost, core::Duplet(root, c.other));
    });
}

bool ZNFaultPatchManager::fastContactMergingWithFaultContactBis(
    int minFaultSize, int minContactCount, double maxCost, core::Array<core::Duplet>* mergeLog,
    int progressParent)
{
    MergingFlag flag(m_mergingInProgress);
    core::Heap<core::Duplet> heap;
    if (!getSortedFaultContact(heap, minFaultSize, minContactCount, maxCost, progressParent))
        return false;

    std::vector<long long> size = faultSizes(*this);
    core::Array<int> tails(kPatchGrowthStep);
    listTails(*this, tails);
    std::vector<FaultContacts> groups;
    int merges = 0;
    ZNStridedProgress bar(kMergeTitle, heap.size(), progressParent);
    double cost = 0.0;
    core::Duplet pair;
    while (heap.pop(cost, pair)) {
        const int rootA = bar.isCancelled() ? 0 : findRootCompressing(pair.a);
        const int rootB = bar.isCancelled() ? 0 : findRootCompressing(pair.b);
        if (isValidPatchId(rootA) && isValidPatchId(rootB) && rootA != rootB) {
            const double c = getContactArrayPlanarMergeCost(rootA, rootB, false);
            if (c != core::kNoValueReal && c <= maxCost && testFaultPatchMerge(rootA, rootB)) {
                mergeRoots(rootA, rootB, &tails);
                size[rootB] += size[rootA];
                ++merges;
                if (mergeLog) mergeLog->add(core::Duplet(rootA, rootB));
                groupContactsByFault(rootB, groups);
                for (const FaultContacts& g : groups) {
                    if (size[g.fault] < minFaultSize || g.pairs.size() < minContactCount) continue;
                    const double again = getContactArrayPlanarMergeCost(g.pairs, false);
                    if (again != core::kNoValueReal && again <= maxCost)
                        heap.push(again, core::Duplet(rootB, g.fault));
                }
            }
        }
        bar.next();
    }
    ZNEventBus::sendMessage(ZNEventBus::Detail, QStringLiteral("Nb Merge : %1").arg(merges));
    return !bar.isCancelled();
}

// ----- overlap test -----

bool ZNFaultPatchManager::testFaultPatchMerge(int a, int b)
{
    const int rootA = getFather(a);
    const int rootB = getFather(b);
    if (rootA == rootB || !isValidPatchId(rootA) || !isValidPatchId(rootB)) return false;
    core::Array<int> listA(64);
    core::Array<int> listB(64);
    getPatchListWithLinkedList(rootA, listA, true);
    getPatchListWithLinkedList(rootB, listB, true);
    return testFaultPatchMerge(listA, listB);
}

bool ZNFaultPatchManager::testFaultPatchMerge(const core::Array<int>& listA,
                                              const core::Array<int>& listB)
{
    const ZNFaultPatch a = getMergedFaultPatch(listA);
    const ZNFaultPatch b = getMergedFaultPatch(listB);
    if (!(dipGap(a.getNormal(), b.getNormal()) <= kMaxMergeDipDifference)) return false;
    if (a.getNbPoint() < 1 || b.getNbPoint() < 1) return false;
    const int index = incrementCurrentIndex();
    setProjectionAxe((a + b).getNormal());
    projectFaultPatchPoint(listA, index);
    const OverlapCount overlap = getNumberOfOverlapPoint(index, listB);
    const double shareOfB = static_cast<double>(overlap.points) / b.getNbPoint();
    const double shareOfA = static_cast<double>(overlap.points) / a.getNbPoint();
    return shareOfB < kMaxOverlapShare && shareOfA < kMaxOverlapShare &&
           static_cast<float>(overlap.meanDepthDifference) < kMaxOverlapDepth;
}

void ZNFaultPatchManager::collectPatchPoints(const core::Array<int>& patchList,
                                             core::Array<core::vec3>& points) const
{
    points.clear();
    for (int id : patchList) {
        const int voxels = m_patchVoxels.getCount(id);
        const core::ByteTriplet* offsets = m_patchVoxels.getArray(id);
        if (voxels > 0 && offsets) {
            for (int k = 0; k < voxels; ++k) points.add(getVoxelPosition(id, offsets[k]));
            continue;
        }
        const int picked = m_pickedPoints.getCount(id);
        const core::PointWithBool* list = m_pickedPoints.getArray(id);
        for (int k = 0; list && k < picked; ++k)
            if (!list[k].isSeparator() && !list[k].flag) points.add(list[k].position());
    }
}

void ZNFaultPatchManager::setProjectionAxe(const core::vec3& axis)
{
    const double length = axis.length();
    if (!(length > 0.0) || !std::isfinite(length)) return;
    const core::vec3 n = axis / length;
    // The coordinate axis least aligned with n gives a well-conditioned image frame.
    const double ax = std::fabs(n.x), ay = std::fabs(n.y), az = std::fabs(n.z);
    const core::vec3 helper = ax <= ay && ax <= az ? core::vec3(1, 0, 0)
                              : ay <= az           ? core::vec3(0, 1, 0)
                                                   : core::vec3(0, 0, 1);
    m_projection.axis = n;
    m_projection.u = n.cross(helper).normalized();
    m_projection.v = n.cross(m_projection.u);
}

void ZNFaultPatchManager::projectFaultPatchPoint(const core::Array<int>& patchList, int index)
{
    ProjectionImage& im = m_projection;
    core::Array<core::vec3> points(1024);
    collectPatchPoints(patchList, points);
    im.width = im.height = 0;
    if (points.empty()) return;
    double minU = points[0].dot(im.u), maxU = minU;
    double minV = points[0].dot(im.v), maxV = minV;
    for (const core::vec3& p : points) {
        minU = std::min(minU, p.dot(im.u));
        maxU = std::max(maxU, p.dot(im.u));
        minV = std::min(minV, p.dot(im.v));
        maxV = std::max(maxV, p.dot(im.v));
    }
    const double extent = std::max(maxU - minU, maxV - minV);
    im.pixelSize = std::max(1.0, std::ceil(extent / kMaxProjectionSide));
    im.u0 = static_cast<int>(std::round(minU / im.pixelSize));
    im.v0 = static_cast<int>(std::round(minV / im.pixelSize));
    const int width = static_cast<int>(std::round(maxU / im.pixelSize)) - im.u0 + 1;
    const int height = static_cast<int>(std::round(maxV / im.pixelSize)) - im.v0 + 1;
    const int pixels = width * height;
    if (pixels > im.stamps.size()) {
        const int old = im.stamps.size();
        if (!im.stamps.resize(pixels) || !im.depths.resize(pixels)) return;
        for (int k = old; k < pixels; ++k) im.stamps[k] = kNoStamp;
    }
    im.width = width;
    im.height = height;
    for (const core::vec3& p : points) {
        const int pu = static_cast<int>(std::round(p.dot(im.u) / im.pixelSize)) - im.u0;
        const int pv = static_cast<int>(std::round(p.dot(im.v) / im.pixelSize)) - im.v0;
        const int k = pu + width * pv;
        if (im.stamps[k] == index) continue;  // the first point keeps the pixel
        im.stamps[k] = index;
        im.depths[k] = static_cast<float>(p.dot(im.axis));
    }
}

ZNFaultPatchManager::OverlapCount ZNFaultPatchManager::getNumberOfOverlapPoint(
    int index, const core::Array<int>& patchList) const
{
    OverlapCount result;
    const ProjectionImage& im = m_projection;
    if (im.width <= 0 || im.height <= 0) return result;
    core::Array<core::vec3> points(1024);
    collectPatchPoints(patchList, points);
    double gap = 0.0;
    for (const core::vec3& p : points) {
        const int pu = static_cast<int>(std::round(p.dot(im.u) / im.pixelSize)) - im.u0;
        const int pv = static_cast<int>(std::round(p.dot(im.v) / im.pixelSize)) - im.v0;
        if (pu < 0 || pv < 0 || pu >= im.width || pv >= im.height) continue;
        const int k = pu + im.width * pv;
        if (im.stamps[k] != index) continue;
        ++result.points;
        gap += std::fabs(im.depths[k] - p.dot(im.axis));
    }
    if (result.points > 0) result.meanDepthDifference = gap / result.points;
    return result;
}
