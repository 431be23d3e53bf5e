#pragma once

class QKeyEvent;
class QMouseEvent;
class QWheelEvent;
class ZNSectionViewer;

// What one mouse mode of a section viewer does with the user's gestures (picking fault
// sticks, moving the reference point, erasing...). The viewer hands each event first to
// the tool of its current mode; an event the tool leaves (returns false) gets the
// viewer's own navigation (drag to pan, wheel to zoom, double-click to fit, Ctrl+click
// for the reference point, keys to step sections).
class ZNSectionTool {
public:
    virtual ~ZNSectionTool() = default;
    virtual bool mousePress(ZNSectionViewer& viewer, QMouseEvent* event);
    virtual bool mouseMove(ZNSectionViewer& viewer, QMouseEvent* event);
    virtual bool mouseRelease(ZNSectionViewer& viewer, QMouseEvent* event);
    virtual bool mouseDoubleClick(ZNSectionViewer& viewer, QMouseEvent* event);
    virtual bool keyPress(ZNSectionViewer& viewer, QKeyEvent* event);
    virtual bool wheel(ZNSectionViewer& viewer, QWheelEvent* event);
};
