#pragma once
#include <cstddef>

#include <zn3dimage.h>

namespace fault::attribute {

// How a recursive filter sees the samples beyond the ends of a line.
enum class LineEnds {
    Constant,  // the end samples repeat: a constant line stays constant (plain smoothing)
    Zero,      // nothing lies beyond: sums over a window count only the samples inside,
               // so that ratios of two smoothed quantities stay ratios of inside samples
};

// The third-order recursive approximation of a Gaussian of standard deviation sigma
// (samples): a causal pass w[n] = b x[n] + a1 w[n-1] + a2 w[n-2] + a3 w[n-3] followed by
// the same recursion run backwards (I. T. Young and L. J. van Vliet, "Recursive
// implementation of the Gaussian filter", Signal Processing 44, 1995, 139-151), its
// parameter chosen so that the impulse response has exactly the variance sigma^2. The
// cost per sample does not depend on sigma. Its impulse response sums to 1; below a
// sigma of 0.5 the filter is the identity.
//
// Lines are filtered many at a time: `count` interleaved lines of `length` samples,
// sample k of line j at data[k * stride + j], so that the inner loop runs over
// neighbouring memory. Ends are started in the steady state of the first sample
// (Constant) or of zero (Zero); the backward pass starts the same way from the last
// output of the forward pass, which leaves a small error within about 3 sigma of the far
// end for Constant (none for Zero on a line that ends in zeros).
class RecursiveGaussian {
public:
    static constexpr double kMinSigma = 0.5;   // below it the filter is the identity

    explicit RecursiveGaussian(double sigma);

    double sigma() const { return m_sigma; }
    bool isIdentity() const { return m_identity; }
    float gain() const { return m_b; }
    float a1() const { return m_a1; }
    float a2() const { return m_a2; }
    float a3() const { return m_a3; }

    // Filters `count` interleaved lines in place (see the class comment); count <= stride.
    void applyInterleaved(float* data, int length, std::ptrdiff_t stride, int count,
                          LineEnds ends) const;

    // Filters every line of a volume of nx x ny x nz samples (x fastest, then y, then z)
    // along one of its axes (0 x, 1 y, 2 z), over the OpenMP threads.
    void applyAlongAxis(float* data, int nx, int ny, int nz, int axis, LineEnds ends) const;
    void applyAlongAxis(ZN3DImage<float>& image, int axis, LineEnds ends) const
    {
        applyAlongAxis(image.data(), image.nx(), image.ny(), image.nz(), axis, ends);
    }

private:
    double m_sigma = 0.0;
    bool m_identity = true;
    float m_b = 1.0F;     // gain of the current sample
    float m_a1 = 0.0F;    // feedback of the previous three outputs
    float m_a2 = 0.0F;
    float m_a3 = 0.0F;
};

// Smooths the image by an isotropic 3D Gaussian of standard deviation sigma (samples)
// with constant ends: three passes of RecursiveGaussian, one along each axis.
void smoothGaussian3D(ZN3DImage<float>& image, double sigma);

} // namespace fault::attribute
