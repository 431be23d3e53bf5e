#pragma once
#include <map>
#include <memory>

#include <QWidget>

#include <core/vec3.h>

#include "znmetatypes.h"
#include "znseismicviewerabstractengine.h"
#include "znsectiontool.h"

class ZNSectionDrawable;

// The widget of a section viewer: paints what its engine shows (the section through its
// colour scale, the drawables, the reference point, the annotated axes, the colour bar
// and the section's title) and forwards the user's gestures, first to the tool of the
// engine's mouse mode, then to its own navigation:
// - left drag pans, the wheel zooms around the cursor, a double-click or F fits;
// - Ctrl+click sets the reference point (referencePointPicked);
// - Up or Right / Down or Left step one section, Page Up / Page Down ten, Home / End go
//   to the first and last.
// The engine is owned by the widget.
class ZNSectionViewer : public QWidget {
    Q_OBJECT
public:
    static constexpr int kLeftMargin = 84;    // pixels for the vertical axis and its title
    static constexpr int kTopMargin = 44;     // the title and the horizontal axis
    static constexpr int kRightMargin = 76;   // the colour bar
    static constexpr int kBottomMargin = 12;
    static constexpr int kPageSteps = 10;     // sections per Page Up / Page Down
    static constexpr double kWheelZoom = 1.25;  // per wheel notch

    explicit ZNSectionViewer(std::unique_ptr<ZNSeismicViewerAbstractEngine> engine, QWidget* parent = nullptr);
    ~ZNSectionViewer() override;

    ZNSeismicViewerAbstractEngine& engine() { return *m_engine; }
    const ZNSeismicViewerAbstractEngine& engine() const { return *m_engine; }

    // The tool of mouse mode `name` (the engine's mode names it); replaces any previous.
    void addTool(const QString& name, std::unique_ptr<ZNSectionTool> tool);
    ZNSectionTool* tool(const QString& name) const;
    // Sets the engine's mouse mode.
    void setMouseMode(const QString& name);

    // Shows the section of the engine's kind through a world point (cross navigation).
    void goToWorldPoint(const core::vec3& world);

    QSize sizeHint() const override { return {640, 480}; }

signals:
    // The section shown changed (stepped, chosen, or another block).
    void sectionChanged();
    void referencePointPicked(const core::vec3& world);
    // A left click without drag nor modifier, at a viewport point (what was clicked is for
    // the host to find: ZNBlocViewerEngine::drawableAt).
    void clicked(const QPointF& viewport);
    // The cursor moved over the section: where, and the sample under it (-9999 outside).
    void cursorMoved(const core::vec3& world, float sample);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    ZNSectionTool* currentTool() const;
    void paintAxes(QPainter& painter);
    void paintColourBar(QPainter& painter);
    void paintReferencePoint(QPainter& painter);
    void step(int steps);

    std::unique_ptr<ZNSeismicViewerAbstractEngine> m_engine;
    std::map<QString, std::unique_ptr<ZNSectionTool>> m_tools;
    QPoint m_dragFrom;
    QPoint m_pressedAt;
    bool m_panning = false;
    bool m_dragged = false;  // the mouse moved while the button was down
    quint64 m_shownVersion = 0;
};
