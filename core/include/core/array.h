#pragma once
#include <new>
#include <utility>

#include "assertion.h"

namespace core {

// A growable array that never throws on allocation. When an allocation fails the
// operation reports through the assertion reporter, returns false and leaves the array
// as it was. A full array grows arithmetically: by `growthStep` slots (at least 1), or to
// the requested size when that is larger. Slots past size() hold default-constructed
// elements. Indices are int, as in every file format of the system.
template <class T>
class Array {
public:
    static constexpr int kDefaultGrowthStep = 16;

    explicit Array(int growthStep = kDefaultGrowthStep) : m_growthStep(clampStep(growthStep)) {}
    Array(const Array& other) : m_growthStep(other.m_growthStep) { copyFrom(other); }
    Array(Array&& other) noexcept { swap(other); }
    Array& operator=(const Array& other)
    {
        if (this != &other) {
            Array copy(other);
            if (copy.m_size == other.m_size) swap(copy);  // else: allocation failed, keep ours
        }
        return *this;
    }
    Array& operator=(Array&& other) noexcept
    {
        if (this != &other) {
            release();
            swap(other);
        }
        return *this;
    }
    ~Array() { delete[] m_data; }

    void swap(Array& other) noexcept
    {
        std::swap(m_data, other.m_data);
        std::swap(m_size, other.m_size);
        std::swap(m_capacity, other.m_capacity);
        std::swap(m_growthStep, other.m_growthStep);
    }

    int size() const { return m_size; }
    int capacity() const { return m_capacity; }
    bool empty() const { return m_size == 0; }
    int growthStep() const { return m_growthStep; }
    void setGrowthStep(int step) { m_growthStep = clampStep(step); }

    T* data() { return m_data; }
    const T* data() const { return m_data; }
    T* begin() { return m_data; }
    T* end() { return m_data + m_size; }
    const T* begin() const { return m_data; }
    const T* end() const { return m_data + m_size; }

    // Unchecked access; index must lie in 0..size()-1.
    T& operator[](int i) { return m_data[i]; }
    const T& operator[](int i) const { return m_data[i]; }
    T& last() { return m_data[m_size - 1]; }
    const T& last() const { return m_data[m_size - 1]; }

    // Checked access: null for an index outside 0..size()-1.
    T* at(int i) { return (i >= 0 && i < m_size) ? m_data + i : nullptr; }
    const T* at(int i) const { return (i >= 0 && i < m_size) ? m_data + i : nullptr; }

    // Appends a copy of `value`; false when the array could not grow.
    bool add(const T& value)
    {
        if (m_size == m_capacity && !reallocate(grownCapacity(m_size + 1))) return false;
        m_data[m_size++] = value;
        return true;
    }

    // Inserts before `position`; position == size() appends. False for a position outside
    // 0..size() or a failed allocation, the array unchanged.
    bool insert(int position, const T& value)
    {
        if (position < 0 || position > m_size) return false;
        if (m_size == m_capacity && !reallocate(grownCapacity(m_size + 1))) return false;
        for (int i = m_size; i > position; --i) m_data[i] = std::move(m_data[i - 1]);
        m_data[position] = value;
        ++m_size;
        return true;
    }

    // Removes the element at `position`; false for an index outside 0..size()-1.
    bool removeAt(int position)
    {
        if (position < 0 || position >= m_size) return false;
        for (int i = position; i + 1 < m_size; ++i) m_data[i] = std::move(m_data[i + 1]);
        m_data[--m_size] = T();
        return true;
    }

    // Sets the size; new elements are default-constructed, removed slots are reset.
    // False for a negative size or a failed allocation.
    bool resize(int newSize)
    {
        if (newSize < 0) return false;
        if (newSize > m_capacity && !reallocate(newSize)) return false;
        for (int i = newSize; i < m_size; ++i) m_data[i] = T();
        m_size = newSize;
        return true;
    }

    // Makes room for `minCapacity` elements without changing the size.
    bool reserve(int minCapacity)
    {
        return minCapacity <= m_capacity || reallocate(minCapacity);
    }

    // Fills the array with `n` copies of `value`.
    bool fill(int n, const T& value)
    {
        if (!resize(n)) return false;
        for (int i = 0; i < n; ++i) m_data[i] = value;
        return true;
    }

    // Size 0; the buffer is kept for reuse.
    void clear()
    {
        for (int i = 0; i < m_size; ++i) m_data[i] = T();
        m_size = 0;
    }

    // Size 0 and the buffer freed.
    void release()
    {
        delete[] m_data;
        m_data = nullptr;
        m_size = 0;
        m_capacity = 0;
    }

    int indexOf(const T& value) const
    {
        for (int i = 0; i < m_size; ++i)
            if (m_data[i] == value) return i;
        return -1;
    }
    bool contains(const T& value) const { return indexOf(value) >= 0; }

private:
    static int clampStep(int step) { return step < 1 ? 1 : step; }

    int grownCapacity(int needed) const
    {
        const long long grown = static_cast<long long>(m_capacity) + m_growthStep;
        const long long target = grown > needed ? grown : needed;
        return target > kMaxCapacity ? needed : static_cast<int>(target);
    }

    bool reallocate(int newCapacity)
    {
        T* fresh = newCapacity > 0 && newCapacity <= kMaxCapacity
                       ? new (std::nothrow) T[static_cast<size_t>(newCapacity)]()
                       : nullptr;
        if (!CORE_CHECK(fresh != nullptr, "core::Array::reallocate", "core/include/core/array"))
            return false;
        for (int i = 0; i < m_size; ++i) fresh[i] = std::move(m_data[i]);
        delete[] m_data;
        m_data = fresh;
        m_capacity = newCapacity;
        return true;
    }

    void copyFrom(const Array& other)
    {
        if (other.m_size == 0 || !reallocate(other.m_size)) return;
        for (int i = 0; i < other.m_size; ++i) m_data[i] = other.m_data[i];
        m_size = other.m_size;
    }

    static constexpr int kMaxCapacity = 0x7fffffff;

    T* m_data = nullptr;
    int m_size = 0;
    int m_capacity = 0;
    int m_growthStep = kDefaultGrowthStep;
};

} // namespace core
