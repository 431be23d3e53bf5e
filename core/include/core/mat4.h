#pragma once
#include <cmath>

#include "vec3.h"
#include "vec4.h"

namespace core {

// A 4x4 matrix of 64-bit reals stored row-major: m[0..3] is the first row,
// m[12..15] the last. A point p maps as a projective transform:
//   w  = m12 x + m13 y + m14 z + m15
//   x' = (m0 x + m1 y + m2 z + m3) / w, and likewise y' (m4..m7) and z' (m8..m11).
// Default construction gives the identity. Trivially copyable.
struct mat4 {
    double m[16] = {1, 0, 0, 0,  0, 1, 0, 0,  0, 0, 1, 0,  0, 0, 0, 1};

    constexpr mat4() = default;

    static constexpr mat4 identity() { return mat4(); }
    static mat4 zero()
    {
        mat4 r;
        for (double& v : r.m) v = 0.0;
        return r;
    }
    static mat4 translation(const vec3& t)
    {
        mat4 r;
        r.m[3] = t.x; r.m[7] = t.y; r.m[11] = t.z;
        return r;
    }
    static mat4 scaling(const vec3& s)
    {
        mat4 r;
        r.m[0] = s.x; r.m[5] = s.y; r.m[10] = s.z;
        return r;
    }

    double& operator()(int row, int col) { return m[4 * row + col]; }
    double operator()(int row, int col) const { return m[4 * row + col]; }

    bool operator==(const mat4& b) const
    {
        for (int i = 0; i < 16; ++i)
            if (m[i] != b.m[i]) return false;
        return true;
    }
    bool operator!=(const mat4& b) const { return !(*this == b); }

    // Matrix product: (a * b) applied to p equals a applied to (b applied to p).
    mat4 operator*(const mat4& b) const
    {
        mat4 r = zero();
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < 4; ++j) {
                double s = 0.0;
                for (int k = 0; k < 4; ++k) s += m[4 * i + k] * b.m[4 * k + j];
                r.m[4 * i + j] = s;
            }
        return r;
    }

    vec4 operator*(const vec4& v) const
    {
        return {m[0] * v.x + m[1] * v.y + m[2] * v.z + m[3] * v.w,
                m[4] * v.x + m[5] * v.y + m[6] * v.z + m[7] * v.w,
                m[8] * v.x + m[9] * v.y + m[10] * v.z + m[11] * v.w,
                m[12] * v.x + m[13] * v.y + m[14] * v.z + m[15] * v.w};
    }

    // The point p transformed with division by its own w. No test for w = 0: the
    // result is then non-finite, as callers of the projective form expect.
    vec3 transformPoint(const vec3& p) const
    {
        const double w = m[12] * p.x + m[13] * p.y + m[14] * p.z + m[15];
        return {(m[0] * p.x + m[1] * p.y + m[2] * p.z + m[3]) / w,
                (m[4] * p.x + m[5] * p.y + m[6] * p.z + m[7]) / w,
                (m[8] * p.x + m[9] * p.y + m[10] * p.z + m[11]) / w};
    }

    // The direction d transformed by the upper 3x3 block (no translation, no division).
    vec3 transformVector(const vec3& d) const
    {
        return {m[0] * d.x + m[1] * d.y + m[2] * d.z,
                m[4] * d.x + m[5] * d.y + m[6] * d.z,
                m[8] * d.x + m[9] * d.y + m[10] * d.z};
    }

    mat4 transposed() const
    {
        mat4 r;
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < 4; ++j) r.m[4 * i + j] = m[4 * j + i];
        return r;
    }

    // Writes the inverse into `out` and returns true; for a singular matrix returns
    // false and leaves `out` untouched.
    bool inverse(mat4& out) const
    {
        // Gauss-Jordan elimination with partial pivoting on [A | I].
        double a[4][8];
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < 8; ++j)
                a[i][j] = j < 4 ? m[4 * i + j] : (j - 4 == i ? 1.0 : 0.0);
        double scale = 0.0;  // largest magnitude, for a relative singularity test
        for (double v : m) scale = std::fmax(scale, std::fabs(v));
        if (scale == 0.0) return false;
        const double tiny = scale * 1e-14;
        for (int col = 0; col < 4; ++col) {
            int pivot = col;
            for (int r = col + 1; r < 4; ++r)
                if (std::fabs(a[r][col]) > std::fabs(a[pivot][col])) pivot = r;
            if (std::fabs(a[pivot][col]) <= tiny) return false;
            if (pivot != col)
                for (int j = 0; j < 8; ++j) {
                    const double t = a[col][j]; a[col][j] = a[pivot][j]; a[pivot][j] = t;
                }
            const double inv = 1.0 / a[col][col];
            for (int j = 0; j < 8; ++j) a[col][j] *= inv;
            for (int r = 0; r < 4; ++r) {
                if (r == col || a[r][col] == 0.0) continue;
                const double f = a[r][col];
                for (int j = 0; j < 8; ++j) a[r][j] -= f * a[col][j];
            }
        }
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < 4; ++j) out.m[4 * i + j] = a[i][j + 4];
        return true;
    }
};

} // namespace core
