#pragma once
#include <new>
#include <string>
#include <type_traits>
#include <utility>

#include "assertion.h"
#include "conventions.h"
#include "pointwithbool.h"
#include "triplet.h"
#include "vec3.h"

namespace core {

namespace detail {

// The element type's name as the container's assertion lines print it.
template <class T> struct MultiArrayTypeName { static const char* get() { return "T"; } };
template <> struct MultiArrayTypeName<int> { static const char* get() { return "int"; } };
template <> struct MultiArrayTypeName<PointWithBool> {
    static const char* get() { return "class core::PointWithBool"; }
};
template <> struct MultiArrayTypeName<ByteTriplet> {
    static const char* get() { return "class core::ByteTriplet"; }
};
template <> struct MultiArrayTypeName<vec3> { static const char* get() { return "class core::vec3"; } };
template <> struct MultiArrayTypeName<Triplet> {
    static const char* get() { return "class core::Triplet"; }
};

template <class T, class = void> struct HasXyz : std::false_type {};
template <class T>
struct HasXyz<T, std::void_t<decltype(std::declval<T>().x), decltype(std::declval<T>().y),
                             decltype(std::declval<T>().z)>> : std::true_type {};

// Duplicate test of addElement: x, y and z compared exactly for point-like types (a
// point's flag is not compared), operator== otherwise.
template <class T> bool samePosition(const T& a, const T& b)
{
    if constexpr (HasXyz<T>::value)
        return a.x == b.x && a.y == b.y && a.z == b.z;
    else
        return a == b;
}

} // namespace detail

// An array of sub-arrays, each with its own buffer, element count and capacity.
// The fault set keeps one sub-array of picked points per patch id in it.
//
// Invariants: 0 <= count <= capacity for every sub-array; slots past the count hold
// default-constructed elements; the container owns every buffer. A default-constructed
// container has no sub-arrays and no count array: operations that need one report an
// assertion and return (see each function). A full sub-array grows by `growthStep` slots.
// Nothing here throws: a failed allocation reports and leaves the container unchanged.
template <class T>
class MultiArray {
public:
    static constexpr int kDefaultGrowthStep = 10;

    MultiArray() = default;
    explicit MultiArray(int numberOfArray, int growthStep = kDefaultGrowthStep)
    {
        init(numberOfArray, growthStep);
    }
    MultiArray(const MultiArray& other) { copyFrom(other); }
    MultiArray(MultiArray&& other) noexcept { swap(other); }
    MultiArray& operator=(const MultiArray& other)
    {
        if (this != &other) {
            MultiArray copy(other);
            swap(copy);
        }
        return *this;
    }
    MultiArray& operator=(MultiArray&& other) noexcept
    {
        if (this != &other) {
            MultiArray empty;
            swap(empty);
            swap(other);
        }
        return *this;
    }
    ~MultiArray() { freeAll(); }

    void swap(MultiArray& other) noexcept
    {
        std::swap(m_arrays, other.m_arrays);
        std::swap(m_countArray, other.m_countArray);
        std::swap(m_capacityArray, other.m_capacityArray);
        std::swap(m_numberOfArray, other.m_numberOfArray);
        std::swap(m_growthStep, other.m_growthStep);
    }

    // Replaces the content with `numberOfArray` empty sub-arrays (no buffers yet).
    // False for a negative number or a failed allocation (the container is then empty).
    bool init(int numberOfArray, int growthStep = kDefaultGrowthStep)
    {
        freeAll();
        setGrowthStep(growthStep);
        return numberOfArray >= 0 && setNumberOfArray(numberOfArray);
    }

    // Grows or shrinks the number of sub-arrays, keeping the first ones. New sub-arrays
    // are empty. False for a negative number or a failed allocation (nothing changed).
    bool setNumberOfArray(int numberOfArray)
    {
        if (numberOfArray < 0) return false;
        if (numberOfArray == m_numberOfArray && m_countArray) return true;
        const size_t n = static_cast<size_t>(numberOfArray);
        T** arrays = new (std::nothrow) T*[n + 1];
        int* counts = new (std::nothrow) int[n + 1];
        int* capacities = new (std::nothrow) int[n + 1];
        if (!CORE_CHECK(arrays && counts && capacities, "core::MultiArray::setNumberOfArray",
                        kSource)) {
            delete[] arrays;
            delete[] counts;
            delete[] capacities;
            return false;
        }
        const int kept = numberOfArray < m_numberOfArray ? numberOfArray : m_numberOfArray;
        for (int i = 0; i < numberOfArray; ++i) {
            arrays[i] = i < kept ? m_arrays[i] : nullptr;
            counts[i] = i < kept ? m_countArray[i] : 0;
            capacities[i] = i < kept ? m_capacityArray[i] : 0;
        }
        for (int i = kept; i < m_numberOfArray; ++i) delete[] m_arrays[i];
        delete[] m_arrays;
        delete[] m_countArray;
        delete[] m_capacityArray;
        m_arrays = arrays;
        m_countArray = counts;
        m_capacityArray = capacities;
        m_numberOfArray = numberOfArray;
        return true;
    }

    // Appends one empty sub-array; returns its index, or -1 when allocation failed.
    int addArray()
    {
        return setNumberOfArray(m_numberOfArray + 1) ? m_numberOfArray - 1 : -1;
    }

    // Removes sub-array `arrayIndex`; the following ones move down by one index.
    bool removeArray(int arrayIndex)
    {
        if (!isValidIndex(arrayIndex)) return false;
        delete[] m_arrays[arrayIndex];
        for (int i = arrayIndex; i + 1 < m_numberOfArray; ++i) {
            m_arrays[i] = m_arrays[i + 1];
            m_countArray[i] = m_countArray[i + 1];
            m_capacityArray[i] = m_capacityArray[i + 1];
        }
        --m_numberOfArray;
        return true;
    }

    int getNumberOfArray() const { return m_numberOfArray; }
    int getGrowthStep() const { return m_growthStep; }
    void setGrowthStep(int step) { m_growthStep = step < 1 ? 1 : step; }
    bool hasCountArray() const { return m_countArray != nullptr; }
    bool isValidIndex(int arrayIndex) const
    {
        return m_countArray && arrayIndex >= 0 && arrayIndex < m_numberOfArray;
    }

    // Number of elements in use in a sub-array; -9999 without a count array or for an
    // index outside 0..getNumberOfArray()-1.
    int getCount(int arrayIndex) const
    {
        return isValidIndex(arrayIndex) ? m_countArray[arrayIndex] : kNoValue;
    }
    // Allocated slots of a sub-array; -9999 for a bad index.
    int getCapacity(int arrayIndex) const
    {
        return isValidIndex(arrayIndex) ? m_capacityArray[arrayIndex] : kNoValue;
    }
    // The element buffer of a sub-array, owned by the container; null for a bad index or
    // a sub-array that has no buffer yet.
    T* getArray(int arrayIndex) { return isValidIndex(arrayIndex) ? m_arrays[arrayIndex] : nullptr; }
    const T* getArray(int arrayIndex) const
    {
        return isValidIndex(arrayIndex) ? m_arrays[arrayIndex] : nullptr;
    }
    // Checked element access: null for a bad sub-array index or a position outside
    // 0..count-1.
    T* element(int arrayIndex, int position)
    {
        return validPosition(arrayIndex, position) ? m_arrays[arrayIndex] + position : nullptr;
    }
    const T* element(int arrayIndex, int position) const
    {
        return validPosition(arrayIndex, position) ? m_arrays[arrayIndex] + position : nullptr;
    }
    // Unchecked element access.
    T& operator()(int arrayIndex, int position) { return m_arrays[arrayIndex][position]; }
    const T& operator()(int arrayIndex, int position) const
    {
        return m_arrays[arrayIndex][position];
    }

    // Inserts before `position` (position == count appends). Without a count array it
    // reports "m_countArray!=nullptr" and returns; a position outside 0..count, a bad
    // index or a failed allocation leaves everything unchanged.
    void insertElement(int arrayIndex, int position, const T& element)
    {
        if (!m_countArray) {
            reportAssertion("m_countArray!=nullptr", functionName("insertElement").c_str(),
                            kSource, kInsertElementLine);
            return;
        }
        if (arrayIndex < 0 || arrayIndex >= m_numberOfArray) return;
        const int count = m_countArray[arrayIndex];
        if (position < 0 || position > count) return;
        if (count + 1 > m_capacityArray[arrayIndex] &&
            !reallocate(arrayIndex, m_capacityArray[arrayIndex] + m_growthStep))
            return;
        T* data = m_arrays[arrayIndex];
        for (int i = count; i > position; --i) data[i] = std::move(data[i - 1]);
        data[position] = element;
        m_countArray[arrayIndex] = count + 1;
    }

    // Appends `element`. With `rejectDuplicate`, an element at exactly the same x, y, z
    // as one already there is refused (false). False for a bad index or a failed
    // allocation.
    bool addElement(int arrayIndex, const T& element, bool rejectDuplicate)
    {
        if (rejectDuplicate && isValidIndex(arrayIndex) && m_arrays[arrayIndex]) {
            const T* data = m_arrays[arrayIndex];
            for (int i = 0; i < m_countArray[arrayIndex]; ++i)
                if (detail::samePosition(data[i], element)) return false;
        }
        if (!isValidIndex(arrayIndex)) return false;
        const int count = m_countArray[arrayIndex];
        if (count + 1 > m_capacityArray[arrayIndex] &&
            !reallocate(arrayIndex, m_capacityArray[arrayIndex] + m_growthStep))
            return false;
        m_arrays[arrayIndex][count] = element;
        m_countArray[arrayIndex] = count + 1;
        return true;
    }

    // Removes the element at `position`; false for a bad index or position.
    bool removeElement(int arrayIndex, int position)
    {
        if (!validPosition(arrayIndex, position)) return false;
        T* data = m_arrays[arrayIndex];
        const int count = m_countArray[arrayIndex];
        for (int i = position; i + 1 < count; ++i) data[i] = std::move(data[i + 1]);
        data[count - 1] = T();
        m_countArray[arrayIndex] = count - 1;
        return true;
    }

    // Makes room for `size` elements: a larger size allocates exactly `size` slots (no
    // growth step), a smaller one keeps the buffer. With `setCount` the count becomes
    // `size` (slots past the old count are default elements). False for a bad index, a
    // negative size or a failed allocation.
    bool setArraySize(int arrayIndex, int size, bool setCount)
    {
        if (!isValidIndex(arrayIndex) || size < 0) return false;
        if (size > m_capacityArray[arrayIndex] && !reallocate(arrayIndex, size)) return false;
        if (setCount) {
            T* data = m_arrays[arrayIndex];
            for (int i = size; i < m_countArray[arrayIndex]; ++i) data[i] = T();
            m_countArray[arrayIndex] = size;
        }
        return true;
    }

    // Empties a sub-array (count 0); its buffer is kept.
    bool clearArray(int arrayIndex) { return setArraySize(arrayIndex, 0, true); }

    // Replaces sub-array `targetIndex` of `target` with a copy of sub-array
    // `sourceIndex`. Without a count array it reports "m_countArray" and returns.
    void copyOneArray(int sourceIndex, MultiArray<T>& target, int targetIndex) const
    {
        if (!m_countArray) {
            reportAssertion("m_countArray", functionName("copyOneArray").c_str(), kSource,
                            kCopyOneArrayLine);
            return;
        }
        const int n = getCount(sourceIndex);
        if (n == kNoValue) return;
        target.setArraySize(targetIndex, n, true);
        if (n < 1 || !target.isValidIndex(targetIndex) || !target.m_arrays[targetIndex] ||
            target.m_countArray[targetIndex] != n)
            return;
        const T* from = m_arrays[sourceIndex];
        T* to = target.m_arrays[targetIndex];
        for (int i = 0; i < n; ++i) to[i] = from[i];
    }

    // Frees every slot past each sub-array's count (the capacity becomes the count).
    void compact()
    {
        for (int i = 0; i < m_numberOfArray; ++i) {
            if (m_capacityArray[i] == m_countArray[i]) continue;
            if (m_countArray[i] == 0) {
                delete[] m_arrays[i];
                m_arrays[i] = nullptr;
                m_capacityArray[i] = 0;
            } else {
                reallocate(i, m_countArray[i]);
            }
        }
    }

    // Total number of elements in use over all sub-arrays.
    long long getTotalCount() const
    {
        long long total = 0;
        for (int i = 0; i < m_numberOfArray; ++i) total += m_countArray[i];
        return total;
    }

private:
    // Reported source path and lines of the two checks; kept stable so that logs of
    // older releases and of this one read the same.
    static constexpr const char* kSource = "core/include/core/multiarray";
    static constexpr int kCopyOneArrayLine = 389;
    static constexpr int kInsertElementLine = 405;

    static std::string functionName(const char* method)
    {
        return std::string("core::MultiArray<") + detail::MultiArrayTypeName<T>::get() +
               ">::" + method;
    }

    bool validPosition(int arrayIndex, int position) const
    {
        return isValidIndex(arrayIndex) && position >= 0 && position < m_countArray[arrayIndex];
    }

    // Moves sub-array `arrayIndex` to a fresh buffer of `capacity` default elements.
    bool reallocate(int arrayIndex, int capacity)
    {
        T* fresh = capacity > 0 ? new (std::nothrow) T[static_cast<size_t>(capacity)]() : nullptr;
        if (!CORE_CHECK(fresh != nullptr, "core::MultiArray::reallocate", kSource)) return false;
        const int count = m_countArray[arrayIndex];
        T* old = m_arrays[arrayIndex];
        for (int i = 0; i < count && i < capacity; ++i) fresh[i] = std::move(old[i]);
        delete[] old;
        m_arrays[arrayIndex] = fresh;
        m_capacityArray[arrayIndex] = capacity;
        return true;
    }

    void copyFrom(const MultiArray& other)
    {
        m_growthStep = other.m_growthStep;
        if (!other.m_countArray || !setNumberOfArray(other.m_numberOfArray)) return;
        for (int i = 0; i < other.m_numberOfArray; ++i) other.copyOneArray(i, *this, i);
    }

    void freeAll()
    {
        for (int i = 0; i < m_numberOfArray; ++i) delete[] m_arrays[i];
        delete[] m_arrays;
        delete[] m_countArray;
        delete[] m_capacityArray;
        m_arrays = nullptr;
        m_countArray = nullptr;
        m_capacityArray = nullptr;
        m_numberOfArray = 0;
    }

    T** m_arrays = nullptr;         // one owned buffer per sub-array (null while empty)
    int* m_countArray = nullptr;    // elements in use per sub-array
    int* m_capacityArray = nullptr; // allocated slots per sub-array
    int m_numberOfArray = 0;
    int m_growthStep = kDefaultGrowthStep;
};

} // namespace core
