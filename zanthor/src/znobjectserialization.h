#pragma once
class QIODevice;
class ZNByteSource;

// The stream form of an object's data: what an object writes when it is embedded in
// another object's binary data (a fault set carries the meshes of its faults this way).
// Unlike the data block of its own file, the stream form carries every count it needs to
// be read back alone.
class ZNObjectSerialization {
public:
    virtual ~ZNObjectSerialization() = default;

    // Writes the stream form at the device's position; false when a write fails.
    virtual bool writeDataStream(QIODevice& stream) const = 0;
    // Reads the stream form from the source's position. False on a short read or counts
    // the source cannot hold; the object is then unchanged.
    virtual bool readDataStream(ZNByteSource& stream) = 0;
};
