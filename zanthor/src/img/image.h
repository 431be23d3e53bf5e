#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

namespace img {

// A 2D image of width x height samples of type T, row by row: the sample of column c and
// row r is at index c + width * r. Allocation never throws: an image whose storage could
// not be had is null (isNull() true, sizes 0). Copies are explicit (clone()); images move.
template <class T>
class BasicImage {
public:
    BasicImage() = default;
    // width x height samples set to `initial`; negative sizes count as 0.
    BasicImage(int width, int height, T initial = T()) { allocate(width, height, initial); }

    BasicImage(BasicImage&&) noexcept = default;
    BasicImage& operator=(BasicImage&&) noexcept = default;
    BasicImage(const BasicImage&) = delete;
    BasicImage& operator=(const BasicImage&) = delete;

    // A deep copy, newly allocated for the caller; null when memory runs out.
    std::unique_ptr<BasicImage> clone() const
    {
        auto copy = std::unique_ptr<BasicImage>(new (std::nothrow) BasicImage(m_width, m_height));
        if (!copy || (copy->isNull() && !isNull())) return nullptr;
        for (std::size_t i = 0; i < sampleCount(); ++i) copy->m_data[i] = m_data[i];
        return copy;
    }

    bool isNull() const { return m_failed; }
    int width() const { return m_width; }
    int height() const { return m_height; }
    std::size_t sampleCount() const { return static_cast<std::size_t>(m_width) * m_height; }
    bool isEmpty() const { return sampleCount() == 0; }
    bool contains(int c, int r) const { return c >= 0 && r >= 0 && c < m_width && r < m_height; }

    // Unchecked access; (c, r) must lie inside the image.
    T& operator()(int c, int r) { return m_data[index(c, r)]; }
    const T& operator()(int c, int r) const { return m_data[index(c, r)]; }
    // Checked read: `fallback` outside the image.
    T value(int c, int r, T fallback) const
    {
        return contains(c, r) ? m_data[index(c, r)] : fallback;
    }
    // Checked write: false (nothing written) outside the image.
    bool setValue(int c, int r, T v)
    {
        if (!contains(c, r)) return false;
        m_data[index(c, r)] = v;
        return true;
    }

    T* data() { return m_data.get(); }
    const T* data() const { return m_data.get(); }
    // First sample of row r, or null for r outside 0..height-1.
    T* row(int r) { return r >= 0 && r < m_height ? m_data.get() + index(0, r) : nullptr; }
    const T* row(int r) const
    {
        return r >= 0 && r < m_height ? m_data.get() + index(0, r) : nullptr;
    }

    void fill(T v)
    {
        for (std::size_t i = 0; i < sampleCount(); ++i) m_data[i] = v;
    }

private:
    std::size_t index(int c, int r) const
    {
        return static_cast<std::size_t>(c) + static_cast<std::size_t>(m_width) * r;
    }

    void allocate(int width, int height, T initial)
    {
        const std::size_t w = width > 0 ? static_cast<std::size_t>(width) : 0;
        const std::size_t h = height > 0 ? static_cast<std::size_t>(height) : 0;
        if (w == 0 || h == 0) return;
        T* storage = new (std::nothrow) T[w * h];
        if (storage == nullptr) {
            m_failed = true;
            return;
        }
        m_data.reset(storage);
        m_width = static_cast<int>(w);
        m_height = static_cast<int>(h);
        fill(initial);
    }

    std::unique_ptr<T[]> m_data;   // width * height samples, row by row
    int m_width = 0;
    int m_height = 0;
    bool m_failed = false;         // storage for a non-empty image could not be had
};

// The framework's image: float samples (seismic amplitudes, mapped data, -9999.0 where
// there is none).
using Image = BasicImage<float>;
// 32-bit integer samples (patch indices per pixel, -9999 where there is none).
using IndexImage = BasicImage<int32_t>;

} // namespace img
