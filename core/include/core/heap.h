#pragma once
#include "array.h"

namespace core {

// A binary min-heap of (cost, item): the entry with the smallest cost comes out first.
// Push sifts up (swapping while the parent's cost is greater); pop moves the last entry
// to the top and sifts it down toward the child with the smaller cost. Among equal costs
// the heap order decides, so the sequence of pops is a deterministic function of the
// sequence of pushes.
template <class T>
class Heap {
public:
    struct Entry {
        double cost = 0.0;
        T item{};
    };

    explicit Heap(int growthStep = 1024) : m_entries(growthStep) {}

    int size() const { return m_entries.size(); }
    bool empty() const { return m_entries.empty(); }
    void clear() { m_entries.clear(); }
    bool reserve(int n) { return m_entries.reserve(n); }

    // Adds an entry; false when the heap could not grow (nothing added).
    bool push(double cost, const T& item)
    {
        if (!m_entries.add(Entry{cost, item})) return false;
        int child = m_entries.size() - 1;
        while (child > 0) {
            const int parent = (child - 1) / 2;
            if (!(m_entries[parent].cost > m_entries[child].cost)) break;
            swapEntries(parent, child);
            child = parent;
        }
        return true;
    }

    // The smallest entry without removing it; null when empty.
    const Entry* top() const { return m_entries.at(0); }

    // Removes the smallest entry into `cost` and `item`; false (outputs untouched) when
    // the heap is empty.
    bool pop(double& cost, T& item)
    {
        if (m_entries.empty()) return false;
        cost = m_entries[0].cost;
        item = m_entries[0].item;
        const int last = m_entries.size() - 1;
        m_entries[0] = m_entries[last];
        m_entries.resize(last);
        siftDown(0);
        return true;
    }

    // Entries in heap order (index 0 is the smallest).
    const Array<Entry>& entries() const { return m_entries; }

private:
    void siftDown(int parent)
    {
        const int n = m_entries.size();
        for (;;) {
            const int left = 2 * parent + 1;
            if (left >= n) return;
            const int right = left + 1;
            const int smaller =
                (right < n && m_entries[right].cost < m_entries[left].cost) ? right : left;
            if (!(m_entries[smaller].cost < m_entries[parent].cost)) return;
            swapEntries(parent, smaller);
            parent = smaller;
        }
    }

    void swapEntries(int a, int b)
    {
        Entry t = m_entries[a];
        m_entries[a] = m_entries[b];
        m_entries[b] = t;
    }

    Array<Entry> m_entries;
};

} // namespace core
