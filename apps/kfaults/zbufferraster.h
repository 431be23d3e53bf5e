#pragma once
#include <vector>

#include <QImage>
#include <QRect>

#include <core/vec3.h>

namespace kfaults {

// Fills flat-coloured triangles into an image through a depth buffer, so that the
// nearest surface wins at every pixel whatever the drawing order. A triangle is given in
// screen space: x and y in pixels (pixel centres at .5), z the inverse of its distance to
// the eye (larger is nearer), which is exact to interpolate linearly across the screen.
// A pixel is covered when its centre lies inside the triangle or on its top or left edge,
// so that triangles sharing an edge leave neither gaps nor double coverage. Only pixels
// inside `clip` (clipped to the image) are written.
class ZBufferRaster {
public:
    ZBufferRaster(QImage& image, const QRect& clip);

    void fillTriangle(const core::vec3& a, const core::vec3& b, const core::vec3& c, QRgb colour);
    // Draws the segment a -> b (same screen space) one pixel wide wherever it is not
    // behind a surface already drawn; a segment lying on a surface counts as in front
    // (relative tolerance `kLineDepthTolerance`). Lines do not hide what comes later.
    void drawLine(const core::vec3& a, const core::vec3& b, QRgb colour);

    static constexpr double kLineDepthTolerance = 2e-3;
    // Pixels written so far (a pixel written twice counts twice).
    long long pixelsWritten() const { return m_written; }

private:
    QImage& m_image;
    QRect m_clip;
    std::vector<double> m_nearest;  // per pixel of the clip rectangle; 0 = nothing yet
    long long m_written = 0;
};

} // namespace kfaults
