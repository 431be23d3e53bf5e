#pragma once
#include <memory>

#include <QPointF>
#include <QPointer>

#include <znsectiondrawable.h>
#include <znsectiontool.h>

#include "znfaultpickingsession.h"

// The section viewer's "FAULT_ERASER" mouse mode: an ellipse follows the cursor, and a
// click erases the current fault's points inside it (the session's eraseInsideEllipse):
// one edit, one step to undo. Ctrl+wheel makes the ellipse larger or smaller, Shift+Ctrl+wheel
// changes its height alone. Its outline is a drawable the host adds to the viewer's
// engine while the mode is on.
class ZNFaultEraser : public ZNSectionTool {
public:
    static QString modeName() { return QStringLiteral("FAULT_ERASER"); }
    static constexpr double kDefaultRadius = 20.0;   // pixels
    static constexpr double kMinimumRadius = 3.0;
    static constexpr double kMaximumRadius = 400.0;
    static constexpr double kWheelScale = 1.2;       // per wheel notch

    ZNFaultEraser();

    void setSession(ZNFaultPickingSession* session) { m_session = session; }
    double radiusX() const { return m_outline->radiusX; }
    double radiusY() const { return m_outline->radiusY; }
    void setRadii(double radiusX, double radiusY);
    // The ellipse drawn at the cursor.
    std::shared_ptr<ZNSectionDrawable> outline() const { return m_outline; }

    bool mousePress(ZNSectionViewer& viewer, QMouseEvent* event) override;
    bool mouseMove(ZNSectionViewer& viewer, QMouseEvent* event) override;
    bool wheel(ZNSectionViewer& viewer, QWheelEvent* event) override;

private:
    struct Outline : ZNSectionDrawable {
        QPointF centre;
        double radiusX = kDefaultRadius;
        double radiusY = kDefaultRadius;
        bool shown = false;
        void draw(QPainter& painter, const ZNBlocViewerEngine& engine) const override;
        double distanceTo(const QPointF& viewport, const ZNBlocViewerEngine& engine) const override;
    };
    QPointer<ZNFaultPickingSession> m_session;
    std::shared_ptr<Outline> m_outline;
};
