// Fuzz target of the fault set reader: every input is read as a whole fault set file,
// once in the 2D form and once in the 3D form. A read may fail; it must not crash, leak,
// read out of bounds or leave the fault set inconsistent (isValid), which aborts.
// What was read is written back in the same form; when the writer accepts it, its own
// reader must read the file again into the same patches, fathers, point counts and
// faults (names in the form the file keeps), or the target aborts.
// The text where the header would stand (from the end of the global header block to the
// first zero byte) is also read as XML by the header tree and by the toolkit's reader
// alone: they must agree on whether it is XML and on the document it holds.
#include <cstdint>
#include <cstdlib>

#include <QBuffer>
#include <QByteArray>
#include <QTemporaryDir>

#include <zn3dfaultpatchlight.h>
#include <znbytesource.h>
#include <zneventbus.h>
#include <znfaultpatchmanager.h>
#include <znfilename.h>
#include <znobjectfile.h>
#include <znxmltree.h>

namespace {
// Messages of refused files are expected by the thousand: they are dropped.
class SilentBus : public ZNEventBus {
protected:
    void message(int, const QString&) override {}
};

QTemporaryDir* g_scratch = nullptr;  // where sets are written back

// What a written fault set must read back as: patches with their fathers and point
// counts, and faults with their ids and names, as the file stores them when `asStored`.
QStringList shapeOf(const ZNFaultPatchManager& set, bool asStored)
{
    QStringList shape;
    for (int i = 0; i < set.getNumberOfPatch(); ++i)
        shape << QStringLiteral("%1:%2").arg(set.getFaultPatch(i)->getFather()).arg(set.getPickedPoints().getCount(i));
    for (const ZN3DFaultPatchLight* light : set.getFaultLightList())
        shape << QStringLiteral("%1 %2").arg(light->getFaultId())
                     .arg(asStored ? ZNFileName::completeBaseName(light->GetFaultName()) : light->GetFaultName());
    return shape;
}

void writeBackAndReadAgain(ZNFaultPatchManager& set, bool twoD)
{
    const QString path = g_scratch->filePath(QStringLiteral("again.faultset"));
    if (!set.writePickedFault(path, twoD, nullptr, false)) return;  // refused, nothing written
    ZNFaultPatchManager again;
    if (!again.readPickedFault(path, twoD, ZNFaultPatchManager::kNoProgressBar) || !again.isValid() ||
        shapeOf(again, false) != shapeOf(set, true))
        std::abort();
}
} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    static SilentBus bus;
    ZNEventBus::install(&bus);
    // Descriptors read the user's viewer settings: keep them in an empty directory.
    static QTemporaryDir settings;
    qputenv("KORVALITH_SETTINGS_DIR", settings.path().toUtf8());
    static QTemporaryDir scratch;
    g_scratch = &scratch;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<int>(size));
    for (const bool twoD : {true, false}) {
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::ReadOnly);
        ZNDeviceSource source(buffer);
        ZNFaultPatchManager set;
        const bool read = set.readPickedFault(source, twoD, ZNFaultPatchManager::kNoProgressBar);
        if (!set.isValid()) std::abort();
        if (read) writeBackAndReadAgain(set, twoD);
    }

    QByteArray header = bytes.mid(ZNObjectFile::kGlobalHeaderSize);
    header.truncate(header.indexOf('\0') < 0 ? header.size() : header.indexOf('\0'));
    ZNXmlTree tree, reference;
    const bool read = tree.setContent(header);
    if (read != reference.setContentWithToolkit(header) ||
        (read && tree.toByteArray() != reference.toByteArray()))
        std::abort();
    return 0;
}
