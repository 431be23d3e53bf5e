#pragma once
#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <utility>

namespace fault::attribute {

// The samples of a slab while the attribute works on it: na x nb x nz values, a fastest,
// then b, then z. The lateral axes (a, b) are the volume's (x, y), or (y, x) once the
// slab has been turned (transposeLateral). Allocation never throws: a slab that could not
// get its storage is empty.
template <class T>
class SlabArray {
public:
    SlabArray() = default;
    // Storage for na x nb x nz values, uninitialised; false (and empty) when sizes are not
    // positive or memory runs out.
    bool allocate(int na, int nb, int nz)
    {
        m_data.reset();
        m_na = m_nb = m_nz = 0;
        if (na <= 0 || nb <= 0 || nz <= 0) return false;
        const std::size_t count = static_cast<std::size_t>(na) * nb * nz;
        m_data.reset(new (std::nothrow) T[count]);
        if (!m_data) return false;
        m_na = na;
        m_nb = nb;
        m_nz = nz;
        return true;
    }
    void release()
    {
        m_data.reset();
        m_na = m_nb = m_nz = 0;
    }

    bool isEmpty() const { return !m_data; }
    int na() const { return m_na; }
    int nb() const { return m_nb; }
    int nz() const { return m_nz; }
    std::size_t sliceSize() const { return static_cast<std::size_t>(m_na) * m_nb; }
    T* slice(int z) { return m_data.get() + sliceSize() * static_cast<std::size_t>(z); }
    const T* slice(int z) const { return m_data.get() + sliceSize() * static_cast<std::size_t>(z); }
    T* data() { return m_data.get(); }
    const T* data() const { return m_data.get(); }

    // Turns every slice so that a and b swap (value (a, b) moves to (b, a)), over the
    // OpenMP threads, each with one slice of scratch. False, the slab unchanged, when the
    // scratch cannot be had.
    bool transposeLateral()
    {
        bool failed = false;
#pragma omp parallel
        {
            std::unique_ptr<T[]> scratch(new (std::nothrow) T[sliceSize()]);
            if (!scratch) {
#pragma omp atomic write
                failed = true;
            }
#pragma omp barrier
            bool anyFailed = false;
#pragma omp atomic read
            anyFailed = failed;
            if (!anyFailed) {
#pragma omp for schedule(static)
                for (int z = 0; z < m_nz; ++z) {
                    T* s = slice(z);
                    for (int b = 0; b < m_nb; ++b)
                        for (int a = 0; a < m_na; ++a)
                            scratch[static_cast<std::size_t>(a) * m_nb + b] = s[static_cast<std::size_t>(b) * m_na + a];
                    std::copy(scratch.get(), scratch.get() + sliceSize(), s);
                }
            }
        }
        if (failed) return false;
        std::swap(m_na, m_nb);
        return true;
    }

private:
    std::unique_ptr<T[]> m_data;
    int m_na = 0;
    int m_nb = 0;
    int m_nz = 0;
};

} // namespace fault::attribute
