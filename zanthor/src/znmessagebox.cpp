#include "znmessagebox.h"

#include <QRegularExpression>

#include "zneventbus.h"
#include "znservice.h"

namespace {
using Slot = ZNServiceSlot<ZNMessageBox>;
}

void ZNMessageBox::showMessage(Icon icon, const QString& title, const QString& text)
{
    instance().show(icon, title, text);
}

ZNMessageBox* ZNMessageBox::install(ZNMessageBox* box) { return Slot::install(box); }

ZNMessageBox& ZNMessageBox::instance() { return Slot::get(); }

QString ZNMessageBox::plainText(const QString& text)
{
    static const QRegularExpression lineBreak(QStringLiteral("<br\\s*/?>"),
                                              QRegularExpression::CaseInsensitiveOption);
    return QString(text).replace(lineBreak, QStringLiteral("\n"));
}

void ZNMessageBox::show(Icon, const QString& title, const QString& text)
{
    ZNEventBus::sendMessage(ZNEventBus::Error, title + QStringLiteral(": ") + plainText(text));
}
