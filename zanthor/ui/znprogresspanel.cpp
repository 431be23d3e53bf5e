#include "znprogresspanel.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace {
constexpr int kIndentPerLevel = 16;  // pixels of indentation of a nested bar
constexpr int kMaxDepth = 64;        // guards a corrupt parent chain

int depthOf(int id, const std::map<int, ZNProgressBarMgr::Bar>& bars)
{
    int depth = 0;
    for (auto it = bars.find(id); it != bars.end() && it->second.parent >= 0 && depth < kMaxDepth;
         it = bars.find(it->second.parent))
        ++depth;
    return depth;
}

int rootOf(int id, const std::map<int, ZNProgressBarMgr::Bar>& bars)
{
    int root = id;
    int steps = 0;
    for (auto it = bars.find(id); it != bars.end() && it->second.parent >= 0 && steps < kMaxDepth; ++steps) {
        const auto parent = bars.find(it->second.parent);
        if (parent == bars.end()) break;
        root = parent->first;
        it = parent;
    }
    return root;
}

int percentOf(const ZNProgressBarMgr::Bar& bar)
{
    if (bar.range <= 0) return 0;
    const long long p = 100LL * bar.value / bar.range;
    return p < 0 ? 0 : (p > 100 ? 100 : static_cast<int>(p));
}
} // namespace

ZNProgressPanel::ZNProgressPanel(QWidget* parent) : QWidget(parent), m_layout(new QVBoxLayout(this))
{
    setObjectName(QStringLiteral("progressPanel"));
    m_layout->setContentsMargins(4, 4, 4, 4);
    hide();
}

void ZNProgressPanel::clearLines()
{
    delete m_content;
    m_content = nullptr;
    m_taskCount = 0;
}

void ZNProgressPanel::showBars(const std::map<int, ZNProgressBarMgr::Bar>& bars)
{
    const bool wasActive = m_taskCount > 0;
    clearLines();
    if (bars.empty()) {
        hide();
        if (wasActive) emit activityChanged(false);
        return;
    }
    m_content = new QWidget(this);
    auto* lines = new QVBoxLayout(m_content);
    lines->setContentsMargins(0, 0, 0, 0);
    // Ids grow with creation, so every task's bars follow its outermost bar; a task's
    // lines are gathered under its root in id order.
    std::map<int, std::vector<int>> tasks;
    for (const auto& entry : bars) tasks[rootOf(entry.first, bars)].push_back(entry.first);
    for (const auto& task : tasks) {
        auto* group = new QFrame(m_content);
        group->setFrameShape(QFrame::StyledPanel);
        auto* groupLayout = new QVBoxLayout(group);
        for (int id : task.second) {
            const ZNProgressBarMgr::Bar& bar = bars.at(id);
            auto* row = new QHBoxLayout;
            row->setContentsMargins(kIndentPerLevel * depthOf(id, bars), 0, 0, 0);
            auto* title = new QLabel(bar.title, group);
            title->setObjectName(QStringLiteral("progressTitle"));
            auto* progress = new QProgressBar(group);
            progress->setObjectName(QStringLiteral("progressBar"));
            progress->setRange(0, bar.range > 0 ? 100 : 0);  // 0..0: busy indicator
            progress->setValue(percentOf(bar));
            row->addWidget(title, 1);
            row->addWidget(progress, 2);
            if (id == task.first) {
                auto* cancel = new QPushButton(tr("Cancel"), group);
                cancel->setObjectName(QStringLiteral("cancelButton"));
                cancel->setEnabled(!bar.cancelled);
                const int root = task.first;
                connect(cancel, &QPushButton::clicked, this, [this, root, cancel] {
                    if (m_manager) m_manager->cancel(root);
                    cancel->setEnabled(false);
                    emit cancelRequested(root);
                });
                row->addWidget(cancel);
            }
            groupLayout->addLayout(row);
        }
        lines->addWidget(group);
        ++m_taskCount;
    }
    m_layout->addWidget(m_content);
    show();
    if (!wasActive) emit activityChanged(true);
}

QStringList ZNProgressPanel::lineTexts() const
{
    QStringList texts;
    if (!m_content) return texts;
    const QList<QLabel*> titles = m_content->findChildren<QLabel*>(QStringLiteral("progressTitle"));
    const QList<QProgressBar*> bars = m_content->findChildren<QProgressBar*>(QStringLiteral("progressBar"));
    for (int i = 0; i < titles.size() && i < bars.size(); ++i)
        texts << QStringLiteral("%1  %2%").arg(titles[i]->text()).arg(bars[i]->value());
    return texts;
}
