#pragma once
// Test doubles of the host services. Each installs itself for its own lifetime and
// restores the previous service when it goes out of scope.
#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>

#include <zneventbus.h>
#include <znmessagebox.h>
#include <znprocess.h>
#include <znprogressbarmgr.h>

// Records every message sent on the event bus.
class RecordingEventBus : public ZNEventBus {
public:
    RecordingEventBus();
    ~RecordingEventBus() override;

    QList<QPair<int, QString>> messages;
    bool contains(int kind, const QString& text) const;
    QStringList texts() const;

protected:
    void message(int kind, const QString& text) override;

private:
    ZNEventBus* m_previous;
};

// Records every action posted to the host; the registry works as the default one does.
class RecordingProcess : public ZNProcess {
public:
    RecordingProcess();
    ~RecordingProcess() override;

    QList<QPair<QString, ZNObject*>> actions;
    QStringList actionNames() const;

protected:
    void action(const QString& name, ZNObject* object) override;

private:
    ZNProcess* m_previous;
};

// Records bars and their increments, and can cancel, as a user would, the task of the
// bar being advanced (its outermost bar, so every bar below it too) once a given number
// of increments has been made in total (cancelAfter < 0: never), or when a bar titled
// `cancelOnTitle` advances.
class RecordingProgress : public ZNProgressBarMgr {
public:
    explicit RecordingProgress(int cancelAfter = -1);
    ~RecordingProgress() override;

    QStringList titles;      // of every bar created, in order
    int increments = 0;      // calls to increment over all bars
    int closed = 0;          // bars closed
    QString cancelOnTitle;   // empty: no cancel by title

protected:
    void onCreated(int id, const Bar& bar) override;
    void onIncremented(int id, const Bar& bar) override;
    void onClosed(int id, const Bar& bar) override;

private:
    void cancelTask(int id, const Bar& bar);

    int m_cancelAfter;
    ZNProgressBarMgr* m_previous;
};

// Records every message box instead of showing it.
class RecordingMessageBox : public ZNMessageBox {
public:
    struct Shown {
        int icon;
        QString title;
        QString text;
    };
    RecordingMessageBox();
    ~RecordingMessageBox() override;

    QList<Shown> shown;

protected:
    void show(Icon icon, const QString& title, const QString& text) override;

private:
    ZNMessageBox* m_previous;
};

// Captures what is printed on the standard error stream between construction and text().
class StderrCapture {
public:
    StderrCapture();
    ~StderrCapture();
    QString text();

private:
    bool m_active = true;
};
