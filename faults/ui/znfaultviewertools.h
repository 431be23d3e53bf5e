#pragma once
#include <functional>
#include <limits>

#include <QString>

#include <znsectiondrawable.h>
#include <znsectiontool.h>

#include "znfaultpickingtool.h"

class ZNFaultViewerEngine;

// The fault viewer's own mouse modes and what it draws over the fault.

// "TYPE_GOTO": a press, and a drag with the button held, move the goto point to the
// picked point under the mouse, or to the point of the fault under it; with "AutoGoto"
// on, the goto point follows the mouse without a button.
class ZNFaultViewerGotoTool : public ZNSectionTool {
public:
    explicit ZNFaultViewerGotoTool(ZNFaultViewerEngine& engine) : m_engine(engine) {}
    bool mousePress(ZNSectionViewer& viewer, QMouseEvent* event) override;
    bool mouseMove(ZNSectionViewer& viewer, QMouseEvent* event) override;
    bool mouseRelease(ZNSectionViewer& viewer, QMouseEvent* event) override;

private:
    ZNFaultViewerEngine& m_engine;
    bool m_pressed = false;
};

// "faultpicking": the section views' picking gestures on the fault shown, which becomes
// the picking session's current fault at the first press. `edited` runs after every
// gesture that may have changed the fault's points.
class ZNFaultViewerPickingTool : public ZNFaultPickingTool {
public:
    ZNFaultViewerPickingTool(ZNFaultViewerEngine& engine, std::function<void()> edited)
        : m_engine(engine), m_edited(std::move(edited))
    {
    }
    bool mousePress(ZNSectionViewer& viewer, QMouseEvent* event) override;
    bool mouseMove(ZNSectionViewer& viewer, QMouseEvent* event) override;
    bool mouseRelease(ZNSectionViewer& viewer, QMouseEvent* event) override;
    bool mouseDoubleClick(ZNSectionViewer& viewer, QMouseEvent* event) override;
    bool keyPress(ZNSectionViewer& viewer, QKeyEvent* event) override;

private:
    bool after(bool handled);

    ZNFaultViewerEngine& m_engine;
    std::function<void()> m_edited;
};

// Drawn over the fault: the working area, the picked points, the goto point and the scale
// bar, as the engine says. Never picked.
class ZNFaultViewerOverlay : public ZNSectionDrawable {
public:
    explicit ZNFaultViewerOverlay(const ZNFaultViewerEngine& engine) : m_engine(engine)
    {
        setName(QStringLiteral("faultViewerOverlay"));
    }
    void draw(QPainter& painter, const ZNBlocViewerEngine& engine) const override;
    double distanceTo(const QPointF&, const ZNBlocViewerEngine&) const override
    {
        return std::numeric_limits<double>::infinity();
    }
    // A round length of world units (1, 2 or 5 times a power of ten) at most
    // `maxPixels` long at `unitsPerPixel`; 0 when none fits.
    static double scaleBarLength(double unitsPerPixel, double maxPixels);

private:
    void drawScaleBar(QPainter& painter) const;

    const ZNFaultViewerEngine& m_engine;
};
