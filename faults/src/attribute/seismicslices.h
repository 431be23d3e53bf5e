#pragma once
#include <georef/blocspace.h>
#include <zn3dimage.h>

class ZNBloc;

namespace fault::attribute {

// Where the fault attribute reads the seismic: z slices on demand, so that a volume may
// stay on disk.
class SeismicSlices {
public:
    virtual ~SeismicSlices() = default;
    // The volume's geometry; its sizes are the volume's.
    virtual const georef::BlocSpace& blocSpace() const = 0;
    // Slices [z, z + count) into `out`, a new image of nx x ny x count samples; false
    // when they cannot be read.
    virtual bool read(int z, int count, ZN3DImage<float>& out) = 0;
};

// The slices of an image held in memory (not owned; it must outlive the reader).
class ImageSeismicSlices : public SeismicSlices {
public:
    explicit ImageSeismicSlices(const ZN3DImage<float>& image) : m_image(image) {}
    const georef::BlocSpace& blocSpace() const override { return m_image.blocSpace(); }
    bool read(int z, int count, ZN3DImage<float>& out) override;

private:
    const ZN3DImage<float>& m_image;
};

// The slices of a block file open for reading (not owned).
class BlocSeismicSlices : public SeismicSlices {
public:
    explicit BlocSeismicSlices(ZNBloc& bloc);
    const georef::BlocSpace& blocSpace() const override;
    bool read(int z, int count, ZN3DImage<float>& out) override;

private:
    ZNBloc& m_bloc;
};

} // namespace fault::attribute
