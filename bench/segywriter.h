#pragma once
// A minimal writer of 3D post-stack SEG-Y files for the benchmarks: a blank textual
// header, a binary header (sample interval, count, format 5: IEEE float, big-endian), then
// one 240-byte trace header (inline at byte 189, crossline at 193, CDP X and Y at 181 and
// 185) and the samples of each trace, inlines in order, crosslines in order within each.
#include <cstdint>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include <zn3dimage.h>

namespace benchsegy {

inline void putBigEndian(std::vector<char>& bytes, std::size_t at, std::uint32_t value, int size)
{
    for (int k = 0; k < size; ++k)
        bytes[at + static_cast<std::size_t>(k)] = static_cast<char>(value >> (8 * (size - 1 - k)));
}

// Writes `volume` (x inline, y crossline, z sample) at `path`; false on failure.
inline bool writeSegy(const std::string& path, const ZN3DImage<float>& volume)
{
    constexpr int kTextBytes = 3200, kBinaryBytes = 400, kTraceHeaderBytes = 240;
    constexpr int kIntervalMicro = 4000, kIeeeFormat = 5, kSpacing = 25;
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    std::vector<char> header(kTextBytes + kBinaryBytes, ' ');
    std::fill(header.begin() + kTextBytes, header.end(), 0);
    putBigEndian(header, 3216, kIntervalMicro, 2);
    putBigEndian(header, 3220, static_cast<std::uint32_t>(volume.nz()), 2);
    putBigEndian(header, 3224, kIeeeFormat, 2);
    out.write(header.data(), static_cast<std::streamsize>(header.size()));
    std::vector<char> trace(kTraceHeaderBytes + 4 * static_cast<std::size_t>(volume.nz()));
    for (int i = 0; i < volume.nx(); ++i)
        for (int c = 0; c < volume.ny(); ++c) {
            std::fill(trace.begin(), trace.begin() + kTraceHeaderBytes, 0);
            putBigEndian(trace, 114, static_cast<std::uint32_t>(volume.nz()), 2);
            putBigEndian(trace, 116, kIntervalMicro, 2);
            putBigEndian(trace, 180, static_cast<std::uint32_t>(kSpacing * i), 4);
            putBigEndian(trace, 184, static_cast<std::uint32_t>(kSpacing * c), 4);
            putBigEndian(trace, 188, static_cast<std::uint32_t>(1 + i), 4);
            putBigEndian(trace, 192, static_cast<std::uint32_t>(1 + c), 4);
            for (int s = 0; s < volume.nz(); ++s) {
                std::uint32_t bits;
                std::memcpy(&bits, &volume(i, c, s), 4);
                putBigEndian(trace, kTraceHeaderBytes + 4 * static_cast<std::size_t>(s), bits, 4);
            }
            out.write(trace.data(), static_cast<std::streamsize>(trace.size()));
        }
    return static_cast<bool>(out.flush());
}

} // namespace benchsegy
