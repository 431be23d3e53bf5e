#include "zneventbus.h"

#include <cstdio>

#include "znservice.h"

namespace {
using Slot = ZNServiceSlot<ZNEventBus>;

QString& lastErrorSlot()
{
    thread_local QString last;
    return last;
}
} // namespace

void ZNEventBus::sendMessage(int kind, const QString& text)
{
    if (kind == Error || kind == FileError) lastErrorSlot() = text;
    instance().message(kind, text);
}

QString ZNEventBus::lastErrorOfThisThread()
{
    return lastErrorSlot();
}

void ZNEventBus::clearLastErrorOfThisThread()
{
    lastErrorSlot().clear();
}

ZNEventBus* ZNEventBus::install(ZNEventBus* bus) { return Slot::install(bus); }

ZNEventBus& ZNEventBus::instance() { return Slot::get(); }

void ZNEventBus::message(int kind, const QString& text)
{
    if (kind != Error && kind != FileError) return;
    const QByteArray utf8 = text.toUtf8();
    std::fprintf(stderr, "%s: %s\n", kind == Error ? "error" : "file error", utf8.constData());
}
