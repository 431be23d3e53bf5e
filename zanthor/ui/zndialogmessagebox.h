#pragma once
#include <QPointer>
#include <QWidget>

#include <znmessagebox.h>

// The message boxes of a host with a GUI: a real QMessageBox over the parent window.
// Shown from the GUI thread, the box is modal and showMessage returns once the user
// closed it. Shown from another thread (a worker running a long operation), the box is
// opened on the GUI thread without waiting, so that a worker never blocks on the user
// and never deadlocks a GUI thread that waits for it. Installs itself for its lifetime
// and restores the previous implementation after.
class ZNDialogMessageBox : public ZNMessageBox {
public:
    explicit ZNDialogMessageBox(QWidget* parent);
    ~ZNDialogMessageBox() override;
    ZNDialogMessageBox(const ZNDialogMessageBox&) = delete;
    ZNDialogMessageBox& operator=(const ZNDialogMessageBox&) = delete;

protected:
    void show(Icon icon, const QString& title, const QString& text) override;

private:
    QPointer<QWidget> m_parent;
    ZNMessageBox* m_previous;
};
