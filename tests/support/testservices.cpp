#include "testservices.h"

#include <gtest/gtest.h>

RecordingEventBus::RecordingEventBus() : m_previous(ZNEventBus::install(this)) {}
RecordingEventBus::~RecordingEventBus() { ZNEventBus::install(m_previous); }

void RecordingEventBus::message(int kind, const QString& text) { messages.append({kind, text}); }

bool RecordingEventBus::contains(int kind, const QString& text) const
{
    return messages.contains(qMakePair(kind, text));
}

QStringList RecordingEventBus::texts() const
{
    QStringList result;
    for (const auto& m : messages) result << m.second;
    return result;
}

RecordingProcess::RecordingProcess() : m_previous(ZNProcess::install(this)) {}
RecordingProcess::~RecordingProcess() { ZNProcess::install(m_previous); }

void RecordingProcess::action(const QString& name, ZNObject* object)
{
    actions.append({name, object});
    ZNProcess::action(name, object);
}

QStringList RecordingProcess::actionNames() const
{
    QStringList result;
    for (const auto& a : actions) result << a.first;
    return result;
}

RecordingProgress::RecordingProgress(int cancelAfter)
    : m_cancelAfter(cancelAfter), m_previous(ZNProgressBarMgr::install(this))
{
}
RecordingProgress::~RecordingProgress() { ZNProgressBarMgr::install(m_previous); }

void RecordingProgress::onCreated(int, const Bar& bar) { titles << bar.title; }

void RecordingProgress::onIncremented(int id, const Bar& bar)
{
    ++increments;
    if ((m_cancelAfter >= 0 && increments >= m_cancelAfter) ||
        (!cancelOnTitle.isEmpty() && bar.title == cancelOnTitle))
        cancelTask(id, bar);
}

void RecordingProgress::cancelTask(int id, const Bar& bar)
{
    int root = id;
    Bar current = bar;
    while (current.parent >= 0) {
        const int parent = current.parent;
        if (!this->bar(parent, current)) break;
        root = parent;
    }
    cancel(root);
}

void RecordingProgress::onClosed(int, const Bar&) { ++closed; }

RecordingMessageBox::RecordingMessageBox() : m_previous(ZNMessageBox::install(this)) {}
RecordingMessageBox::~RecordingMessageBox() { ZNMessageBox::install(m_previous); }

void RecordingMessageBox::show(Icon icon, const QString& title, const QString& text)
{
    shown.append({icon, title, text});
}

StderrCapture::StderrCapture() { testing::internal::CaptureStderr(); }
StderrCapture::~StderrCapture()
{
    if (m_active) testing::internal::GetCapturedStderr();
}
QString StderrCapture::text()
{
    m_active = false;
    return QString::fromStdString(testing::internal::GetCapturedStderr());
}
