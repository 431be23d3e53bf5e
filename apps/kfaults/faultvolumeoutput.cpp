#include "faultvolumeoutput.h"

#include <algorithm>
#include <cerrno>
#include <memory>
#include <vector>

#include <QSaveFile>
#include <QtEndian>

#include <core/conventions.h>
#include <znbloc.h>
#include <znfaultpatchmanager.h>
#include <znwritefailure.h>
#include <znwriteback.h>

#include "commands.h"
#include "extractoutputs.h"

namespace kfaults {
namespace {

// Bytes of labels made and written at once.
constexpr std::size_t kSlabBytes = std::size_t(8) << 20;

QString rawHeaderText(const georef::BlocSpace& space)
{
    return QStringLiteral(
               "# fault volume: one int32 per voxel, the id of its fault (-9999 elsewhere)\n"
               "file %1\nnInline %2\nnCrossline %3\nnSample %4\nsampleType int32\n"
               "byteOrder little\naxisOrder %5\nnoValue -9999\n")
        .arg(OutputNames::volumeRaw)
        .arg(space.nx())
        .arg(space.ny())
        .arg(space.nz())
        .arg(QLatin1String(kFaultVolumeAxisOrder));
}

// The raw form: samples appended slab by slab to a file that replaces its target on
// finish().
class RawWriter {
public:
    explicit RawWriter(const QString& path) : m_file(path) {}
    bool open() { return m_file.open(QIODevice::WriteOnly); }
    bool append(const ZN3DImage<int>& slab)
    {
        const qint64 bytes = static_cast<qint64>(slab.voxelCount() * sizeof(int));
        const int* labels = slab.data();
        if (QSysInfo::ByteOrder != QSysInfo::LittleEndian) {
            m_swapped.resize(slab.voxelCount());
            for (std::size_t i = 0; i < slab.voxelCount(); ++i) m_swapped[i] = qToLittleEndian(labels[i]);
            labels = m_swapped.data();
        }
        // Written a piece at a time, each streamed to disk while the next is made.
        const char* data = reinterpret_cast<const char*>(labels);
        for (qint64 done = 0; done < bytes;) {
            const qint64 piece = std::min(bytes - done, ZNWriteback::kPieceBytes);
            if (m_file.write(data + done, piece) != piece || !m_writeback.written(m_bytesWritten, piece))
                return false;
            done += piece;
            m_bytesWritten += piece;
        }
        return true;
    }
    bool finish() { return m_file.commit(); }
    QString failure(int systemError) const
    {
        return QStringLiteral("%1: cannot be written (%2)")
            .arg(m_file.fileName(), ZNWriteFailure::reason(m_file, systemError));
    }

private:
    QSaveFile m_file;
    std::vector<int> m_swapped;  // little-endian copy of a slab on a big-endian machine
    ZNWriteback m_writeback{m_file};
    qint64 m_bytesWritten = 0;
};

} // namespace

const char* faultVolumeFormName(FaultVolumeForm form)
{
    switch (form) {
    case FaultVolumeForm::Raw: return "raw";
    case FaultVolumeForm::Both: return "both";
    case FaultVolumeForm::Bloc: break;
    }
    return "bloc";
}

QString writeFaultVolume(const ZNFaultPatchManager& set, const QDir& dir, FaultVolumeForm form,
                         QStringList& written)
{
    const georef::BlocSpace& space = set.getBlocSpace();
    if (space.isEmpty()) return QStringLiteral("the fault volume is empty");
    const bool bloc = form != FaultVolumeForm::Raw;
    const bool raw = form != FaultVolumeForm::Bloc;
    const QString blocPath = dir.filePath(OutputNames::volumeBloc);
    const QString rawPath = dir.filePath(OutputNames::volumeRaw);
    ZNBloc blocFile;
    RawWriter rawFile(rawPath);
    errno = 0;  // a failure names the system call that failed after this point
    if (bloc && !blocFile.create(blocPath, space, 0, space.nz(), ZNBloc::Int32, set.GetUnitObject()))
        return cannotBeWritten(blocPath, errno);
    if (raw && !rawFile.open()) return rawFile.failure(errno);

    const std::size_t sliceBytes = static_cast<std::size_t>(space.nx()) * space.ny() * sizeof(int);
    const int depth = static_cast<int>(std::clamp<std::size_t>(kSlabBytes / sliceBytes, 1, space.nz()));
    // One slab, cleared once: each one written is cleared again where it was painted.
    ZN3DImage<int> slab(georef::BlocSpace(space.nx(), space.ny(), depth), core::kNoValue);
    for (int z = 0; z < space.nz(); z += depth) {
        const int count = std::min(depth, space.nz() - z);
        if (count < depth) slab = ZN3DImage<int>(georef::BlocSpace(space.nx(), space.ny(), count), core::kNoValue);
        if (slab.isNull() || !set.fillFaultLabelSlab(z, slab, true)) return QStringLiteral("out of memory for the fault volume");
        if (bloc && !blocFile.writeSlices(z, slab, 0, count)) return cannotBeWritten(blocPath, errno);
        if (raw && !rawFile.append(slab)) return rawFile.failure(errno);
        set.clearFaultLabelSlab(z, slab);
    }
    if (bloc) {
        if (!blocFile.close()) return cannotBeWritten(blocPath, errno);
        written << blocPath;
    }
    if (raw) {
        if (!rawFile.finish()) return rawFile.failure(errno);
        written << rawPath;
        const QString headerPath = dir.filePath(OutputNames::volumeHeader);
        const QString headerError = saveTextFile(headerPath, rawHeaderText(space).toUtf8());
        if (!headerError.isEmpty()) return headerError;
        written << headerPath;
    }
    return QString();
}

} // namespace kfaults
