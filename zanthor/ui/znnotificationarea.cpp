#include "znnotificationarea.h"

#include <QEvent>
#include <QLabel>
#include <QPointer>
#include <QTimer>
#include <QVBoxLayout>

namespace {
constexpr int kMargin = 12;        // pixels from the window's edges
constexpr int kBannerWidth = 360;  // pixels
const char* const kBannerStyle =
    "QLabel { background: #fff4f2; color: #7a1212; border: 1px solid #d24a43;"
    " border-radius: 4px; padding: 8px; }";
} // namespace

ZNNotificationArea::ZNNotificationArea(QWidget* window)
    : QWidget(window), m_window(window), m_layout(new QVBoxLayout(this))
{
    setObjectName(QStringLiteral("notificationArea"));
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->setSpacing(6);
    setAttribute(Qt::WA_TransparentForMouseEvents, false);
    window->installEventFilter(this);
    hide();
}

void ZNNotificationArea::notify(const QString& text)
{
    while (m_banners.size() >= kMaxShown) dismiss(m_banners.first());
    auto* banner = new QLabel(text, this);
    banner->setObjectName(QStringLiteral("notification"));
    banner->setWordWrap(true);
    banner->setFixedWidth(kBannerWidth);
    banner->setStyleSheet(QLatin1String(kBannerStyle));
    banner->setCursor(Qt::PointingHandCursor);
    banner->installEventFilter(this);
    m_layout->addWidget(banner);
    m_banners.append(banner);
    QPointer<QLabel> guarded(banner);
    QTimer::singleShot(m_displayMs, this, [this, guarded] {
        if (guarded) dismiss(guarded);
    });
    show();
    raise();
    place();
}

QStringList ZNNotificationArea::shownTexts() const
{
    QStringList texts;
    for (const QLabel* b : m_banners) texts << b->text();
    return texts;
}

bool ZNNotificationArea::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_window && (event->type() == QEvent::Resize || event->type() == QEvent::Show))
        place();
    auto* banner = qobject_cast<QLabel*>(watched);
    if (banner && m_banners.contains(banner) && event->type() == QEvent::MouseButtonRelease) {
        dismiss(banner);
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

void ZNNotificationArea::dismiss(QLabel* banner)
{
    if (!m_banners.removeOne(banner)) return;
    m_layout->removeWidget(banner);
    banner->deleteLater();
    if (m_banners.isEmpty()) hide();
    else place();
}

void ZNNotificationArea::place()
{
    adjustSize();
    const QSize size = sizeHint();
    move(m_window->width() - size.width() - kMargin, m_window->height() - size.height() - kMargin);
    resize(size);
}
