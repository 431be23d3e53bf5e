#include "volumeio/volumeslabreader.h"

#include <algorithm>
#include <cstring>

#include <zneventbus.h>

namespace volumeio {
namespace {

// Block file samples go through an image of their own: at most this many bytes at once.
constexpr double kBlocChunkBytes = 16.0 * (1 << 20);

} // namespace

QString VolumeSlabReader::open(const VolumeSource& source)
{
    m_space = georef::BlocSpace();
    m_file.close();
    m_bloc.close();
    m_source = source;
    const QString& path = source.path;
    switch (source.format) {
    case VolumeFormat::Raw: {
        m_file.setFileName(path);
        if (!m_file.open(QIODevice::ReadOnly))
            return reportVolumeError(ZNEventBus::FileError, path, QStringLiteral("cannot open: ") + m_file.errorString());
        const QString mismatch = rawSampleLayout(source.raw, m_file.size(), m_samples);
        if (!mismatch.isEmpty()) {
            m_file.close();
            return reportVolumeError(ZNEventBus::Error, path, mismatch);
        }
        m_space = rawBlocSpace(source.raw);
        m_units = georef::UnitObject();
        return QString();
    }
    case VolumeFormat::Segy: {
        const QString error = readSegyGeometry(path, m_segy);
        if (!error.isEmpty()) return error;
        m_space = m_segy.space;
        m_units = segyUnits();
        return QString();
    }
    case VolumeFormat::Bloc:
        if (!m_bloc.open(path))
            return reportVolumeError(ZNEventBus::FileError, path, QStringLiteral("not a readable block file"));
        m_space = m_bloc.blocSpace();
        m_units = m_bloc.unitObject();
        return QString();
    }
    return reportVolumeError(ZNEventBus::Error, path, QStringLiteral("unknown volume format"));
}

QString VolumeSlabReader::read(int z0, int count, float* out)
{
    const QString& path = m_source.path;
    if (!isOpen() || out == nullptr || z0 < 0 || count < 1 || count > m_space.nz() - z0)
        return reportVolumeError(ZNEventBus::Error, path, QStringLiteral("the slices asked for lie outside the volume"));
    switch (m_source.format) {
    case VolumeFormat::Raw: {
        bool cancelled = false;
        const QString reason = readFileSamples(m_file, m_samples, z0, count, out, nullptr, 0, cancelled);
        return reason.isEmpty() ? QString() : reportVolumeError(ZNEventBus::FileError, path, reason);
    }
    case VolumeFormat::Segy:
        return readSegySlices(path, m_segy, z0, count, out);
    case VolumeFormat::Bloc: {
        const std::size_t slice = static_cast<std::size_t>(m_space.nx()) * static_cast<std::size_t>(m_space.ny());
        const int chunk = std::max(1, static_cast<int>(kBlocChunkBytes / (static_cast<double>(slice) * sizeof(float))));
        ZN3DImage<float> part;
        for (int z = z0; z < z0 + count; z += chunk) {
            const int depth = std::min(chunk, z0 + count - z);
            if (!m_bloc.readBox(0, 0, z, m_space.nx(), m_space.ny(), depth, part))
                return reportVolumeError(ZNEventBus::FileError, path,
                                         QStringLiteral("the samples of the block file cannot be read"));
            std::memcpy(out + slice * static_cast<std::size_t>(z - z0), part.data(), part.voxelCount() * sizeof(float));
        }
        return QString();
    }
    }
    return reportVolumeError(ZNEventBus::Error, path, QStringLiteral("unknown volume format"));
}

} // namespace volumeio
