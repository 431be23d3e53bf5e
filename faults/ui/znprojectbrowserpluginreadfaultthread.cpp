#include "znprojectbrowserpluginreadfaultthread.h"

#include <QFile>

#include <zn3dfaultpatchlight.h>
#include <znbytesource.h>
#include <znobjectfile.h>
#include <znxml.h>

namespace {
const QString kPickedFaultSet = QStringLiteral("ZNPickedFaultPatchManager");
const QString kNumberOfPatch = QStringLiteral("numberOfPatch");
const QString kFaultLight = QStringLiteral("ZN3DFaultPatchLight");
const QString kUnnamedEntry = QStringLiteral("%1 (%2)");
} // namespace

ZNProjectBrowserPluginReadFaultThread::ZNProjectBrowserPluginReadFaultThread(QObject* parent)
    : ZNProjectBrowserPluginReadThread(parent)
{
}

ZNProjectBrowserPluginReadFaultThread::~ZNProjectBrowserPluginReadFaultThread()
{
    // Stopped here, while readFile is still this class's.
    requestInterruption();
    wait();
}

QString ZNProjectBrowserPluginReadFaultThread::unnamedLabel()
{
    return QStringLiteral("Unnamed");
}

QStringList ZNProjectBrowserPluginReadFaultThread::readFaultNames(const QString& path)
{
    QStringList names;
    if (path.isEmpty()) return names;
    // Unbuffered: the global header and the XML header are read with one call each and
    // not a byte of the data block comes with them.
    QFile file(ZNObjectFile::platformPath(path));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) return names;
    ZNDeviceSource source(file);
    ZNObjectFile::TreeHeader header;
    if (!ZNObjectFile::readHeader(source, header)) return names;
    const ZNXmlElement faultSet = header.tree.documentElement().firstChildElement(kPickedFaultSet);
    if (faultSet.isNull()) return names;

    const long long numberOfPatch = ZNXml::readInt(faultSet, kNumberOfPatch, 0);
    // Each descriptor starts as a copy of one made once: a new descriptor draws its colour
    // from the process's random generator, whose sequence gives the GUI thread's new
    // faults their colours and is not a reader's to consume.
    static const ZN3DFaultPatchLight blank;
    int unnamed = 0;
    for (ZNXmlElement e = faultSet.firstChildElement(kFaultLight); !e.isNull(); e = e.nextSiblingElement(kFaultLight)) {
        // Of the descriptor's header only the id and the name matter here; reading the rest
        // (pen, gridding) would cost more than the header's whole parse.
        ZN3DFaultPatchLight light(blank);
        light.getIdentity(&e);
        const int id = light.getFaultId();
        if (id < 1 || id >= numberOfPatch) continue;
        if (light.IsNamed())
            names << light.GetFaultName();
        else
            ++unnamed;
    }
    if (unnamed > 0) names << kUnnamedEntry.arg(unnamedLabel()).arg(unnamed);
    return names;
}
