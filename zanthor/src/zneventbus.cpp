#include "zneventbus.h"

#include <cstdio>

#include "znservice.h"

namespace {
using Slot = ZNServiceSlot<ZNEventBus>;
}

void ZNEventBus::sendMessage(int kind, const QString& text)
{
    instance().message(kind, text);
}

ZNEventBus* ZNEventBus::install(ZNEventBus* bus) { return Slot::install(bus); }

ZNEventBus& ZNEventBus::instance() { return Slot::get(); }

void ZNEventBus::message(int kind, const QString& text)
{
    if (kind != Error && kind != FileError) return;
    const QByteArray utf8 = text.toUtf8();
    std::fprintf(stderr, "%s: %s\n", kind == Error ? "error" : "file error", utf8.constData());
}
