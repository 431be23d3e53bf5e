// Fuzz target of the stick file readers and of what the tool makes of their result:
// every input is read as a Charisma, IESX, OpendTect and GOCAD PLine file. A read may
// fail; it must not crash, leak or read out of bounds. What a reader accepts is
//   - written back in its format: when the writer accepts it, the reader must read the
//     file again with the same faults, sticks and points, or the target aborts;
//   - turned into a fault set as `kfaults sticks import` does (names kept apart): when
//     the fault set writer accepts it, the fault set reader must read it again with the
//     same patches, fathers, point counts and faults, or the target aborts.
#include <cstdint>
#include <cstdlib>
#include <memory>

#include <QFile>
#include <QTemporaryDir>

#include <exchange/faultsetsticks.h>
#include <exchange/stickformat.h>
#include <exchange/stickset.h>
#include <storedfaultnames.h>
#include <znfaultpatchmanager.h>

#include "fuzzhost.h"

namespace {
QTemporaryDir* g_scratch = nullptr;

using fault::exchange::StickSet;

// Fault names with the stick and point counts of each fault.
QStringList shapeOf(const StickSet& set)
{
    QStringList shape;
    for (const fault::exchange::FaultSticks& f : set.faults) {
        QString line = f.name;
        for (const fault::exchange::Stick& s : f.sticks) line += QStringLiteral(" %1").arg(s.size());
        shape << line;
    }
    return shape;
}

void writeBackAndReadAgain(const StickSet& sticks, fault::exchange::StickFormat format)
{
    const QString path = g_scratch->filePath(QStringLiteral("again.txt"));
    if (!fault::exchange::writeSticks(path, format, sticks)) return;
    StickSet again;
    if (!fault::exchange::readSticks(path, format, again) || shapeOf(again) != shapeOf(sticks)) std::abort();
}

void importAndReadAgain(const StickSet& sticks)
{
    const std::unique_ptr<ZNFaultPatchManager> imported(fault::exchange::faultSetFromSticks(sticks));
    if (!imported) return;
    fault::makeStoredFaultNamesUnique(*imported);
    fuzzhost::writeBackAndReadAgain(*imported, false, *g_scratch);
}
} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    g_scratch = &fuzzhost::install();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString input = g_scratch->filePath(QStringLiteral("input.txt"));
    QFile file(input);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) std::abort();
    file.write(reinterpret_cast<const char*>(data), static_cast<qint64>(size));
    file.close();
    using fault::exchange::StickFormat;
    for (const StickFormat format :
         {StickFormat::Charisma, StickFormat::Iesx, StickFormat::OpendTect, StickFormat::GocadPLine}) {
        StickSet sticks;
        if (!fault::exchange::readSticks(input, format, sticks)) continue;
        writeBackAndReadAgain(sticks, format);
        importAndReadAgain(sticks);
    }
    return 0;
}
