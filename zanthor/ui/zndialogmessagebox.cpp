#include "zndialogmessagebox.h"

#include <QCoreApplication>
#include <QMessageBox>
#include <QThread>

namespace {
QMessageBox::Icon boxIcon(ZNMessageBox::Icon icon)
{
    switch (icon) {
    case ZNMessageBox::Information: return QMessageBox::Information;
    case ZNMessageBox::Warning: return QMessageBox::Warning;
    case ZNMessageBox::Critical: return QMessageBox::Critical;
    }
    return QMessageBox::NoIcon;
}
} // namespace

ZNDialogMessageBox::ZNDialogMessageBox(QWidget* parent)
    : m_parent(parent), m_previous(ZNMessageBox::install(this))
{
}

ZNDialogMessageBox::~ZNDialogMessageBox()
{
    ZNMessageBox::install(m_previous);
}

void ZNDialogMessageBox::show(Icon icon, const QString& title, const QString& text)
{
    QObject* gui = QCoreApplication::instance();
    if (!gui) return;
    QPointer<QWidget> parent = m_parent;
    // Widgets are made on the GUI thread only.
    const auto makeBox = [parent, icon, title, text] {
        auto* box = new QMessageBox(boxIcon(icon), title, text, QMessageBox::Ok, parent.data());
        box->setObjectName(QStringLiteral("messageBox"));
        box->setTextFormat(Qt::RichText);  // the library's texts use "<br>" line breaks
        box->setAttribute(Qt::WA_DeleteOnClose);
        return box;
    };
    if (QThread::currentThread() == gui->thread()) {
        makeBox()->exec();
        return;
    }
    QMetaObject::invokeMethod(gui, [makeBox] { makeBox()->show(); }, Qt::QueuedConnection);
}
