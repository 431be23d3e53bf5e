#include "zbufferraster.h"

#include <algorithm>
#include <cmath>

namespace kfaults {

namespace {
// Edge function of (a, b) at p: positive when p lies to the left of a -> b (y down).
double edge(const core::vec3& a, const core::vec3& b, double px, double py)
{
    return (b.x - a.x) * (py - a.y) - (b.y - a.y) * (px - a.x);
}

// Top-left rule: an edge owns the pixels whose centres lie exactly on it when it is a
// top edge (horizontal, the triangle below it) or a left edge.
bool ownsBoundary(const core::vec3& a, const core::vec3& b)
{
    const double dy = b.y - a.y;
    const double dx = b.x - a.x;
    return dy < 0.0 || (dy == 0.0 && dx > 0.0);
}
} // namespace

ZBufferRaster::ZBufferRaster(QImage& image, const QRect& clip)
    : m_image(image), m_clip(clip.intersected(image.rect()))
{
    m_nearest.assign(size_t(std::max(0, m_clip.width())) * size_t(std::max(0, m_clip.height())), 0.0);
}

void ZBufferRaster::fillTriangle(const core::vec3& a0, const core::vec3& b0, const core::vec3& c0, QRgb colour)
{
    // Wind the triangle counter-clockwise on screen (y down) so every edge function is
    // positive inside.
    const core::vec3& a = a0;
    const bool flip = edge(a0, b0, c0.x, c0.y) < 0.0;
    const core::vec3& b = flip ? c0 : b0;
    const core::vec3& c = flip ? b0 : c0;
    const double area = edge(a, b, c.x, c.y);
    if (!(area > 0.0) || m_clip.isEmpty()) return;

    const int x0 = std::max(m_clip.left(), int(std::floor(std::min({a.x, b.x, c.x}))));
    const int x1 = std::min(m_clip.right(), int(std::ceil(std::max({a.x, b.x, c.x}))));
    const int y0 = std::max(m_clip.top(), int(std::floor(std::min({a.y, b.y, c.y}))));
    const int y1 = std::min(m_clip.bottom(), int(std::ceil(std::max({a.y, b.y, c.y}))));
    const bool ownsBC = ownsBoundary(b, c), ownsCA = ownsBoundary(c, a), ownsAB = ownsBoundary(a, b);
    for (int y = y0; y <= y1; ++y) {
        const double py = y + 0.5;
        QRgb* row = reinterpret_cast<QRgb*>(m_image.scanLine(y));
        double* nearest = m_nearest.data() + size_t(y - m_clip.top()) * size_t(m_clip.width());
        for (int x = x0; x <= x1; ++x) {
            const double px = x + 0.5;
            const double wa = edge(b, c, px, py);  // weight of a
            const double wb = edge(c, a, px, py);
            const double wc = edge(a, b, px, py);
            const bool inside = (wa > 0.0 || (wa == 0.0 && ownsBC)) &&
                                (wb > 0.0 || (wb == 0.0 && ownsCA)) &&
                                (wc > 0.0 || (wc == 0.0 && ownsAB));
            if (!inside) continue;
            const double depth = (wa * a.z + wb * b.z + wc * c.z) / area;
            double& slot = nearest[x - m_clip.left()];
            if (depth <= slot) continue;
            slot = depth;
            row[x] = colour;
            ++m_written;
        }
    }
}

void ZBufferRaster::drawLine(const core::vec3& a, const core::vec3& b, QRgb colour)
{
    const double length = std::max(std::fabs(b.x - a.x), std::fabs(b.y - a.y));
    const int steps = std::max(1, int(std::ceil(length)));
    for (int i = 0; i <= steps; ++i) {
        const double t = double(i) / steps;
        const int x = int(std::floor(a.x + (b.x - a.x) * t));
        const int y = int(std::floor(a.y + (b.y - a.y) * t));
        if (!m_clip.contains(x, y)) continue;
        const double depth = a.z + (b.z - a.z) * t;
        const double nearest = m_nearest[size_t(y - m_clip.top()) * size_t(m_clip.width()) + size_t(x - m_clip.left())];
        if (depth * (1.0 + kLineDepthTolerance) < nearest) continue;
        reinterpret_cast<QRgb*>(m_image.scanLine(y))[x] = colour;
        ++m_written;
    }
}

} // namespace kfaults
