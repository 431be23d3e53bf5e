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

#include <znbytesource.h>
#include <znfaultpatchmanager.h>
#include <znobjectfile.h>
#include <znxmltree.h>

#include "fuzzhost.h"

namespace {
QTemporaryDir* g_scratch = nullptr;  // where sets are written back
} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    g_scratch = &fuzzhost::install();
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
        if (read) fuzzhost::writeBackAndReadAgain(set, twoD, *g_scratch);
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
