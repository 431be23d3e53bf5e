#pragma once
#include <QList>
#include <QString>
#include <QWidget>

class QLabel;
class QTimer;
class QVBoxLayout;

// Non-blocking notifications over a window: each message appears as a small banner in
// the bottom right corner of the watched window, newest at the bottom, and goes away by
// itself after displaySeconds() or when clicked. At most kMaxShown banners are shown;
// older ones give way. Nothing here ever waits for the user.
class ZNNotificationArea : public QWidget {
    Q_OBJECT
public:
    static constexpr int kMaxShown = 4;
    static constexpr int kDefaultDisplayMs = 8000;

    // Floats over `window` (which owns it) and follows its size.
    explicit ZNNotificationArea(QWidget* window);

    void notify(const QString& text);
    // The texts shown now, oldest first.
    QStringList shownTexts() const;
    int displayMs() const { return m_displayMs; }
    void setDisplayMs(int ms) { m_displayMs = ms; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void dismiss(QLabel* banner);
    void place();

    QWidget* m_window;
    QVBoxLayout* m_layout;
    QList<QLabel*> m_banners;
    int m_displayMs = kDefaultDisplayMs;
};
