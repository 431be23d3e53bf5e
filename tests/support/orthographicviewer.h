#pragma once
// A section viewer for tests: an orthographic view whose screen position of a point is
// given by a matrix (screen x and y are the first two coordinates of the transformed
// point; identity by default, so screen = (x, y) of the point), a set of shown patches,
// and an optional section.
#include <set>

#include <core/mat4.h>
#include <znpickingviewer.h>

class OrthographicViewer : public ZNPickingViewer {
public:
    OrthographicViewer() = default;

    core::vec2 projectToScreen(const core::vec3& point) const override;
    bool isPatchShown(const ZNObject* faultSet, int patchId) const override;
    bool getShownRandomLine(geom::RandomLine& line) const override;

    // Every patch of every fault set is shown unless a list is given.
    void showAll() { m_showAll = true; m_shown.clear(); }
    void showOnly(std::set<int> patches) { m_showAll = false; m_shown = std::move(patches); }
    void hideAll() { showOnly({}); }

    void setWorldToScreen(const core::mat4& m) { m_worldToScreen = m; }
    void setSection(const geom::RandomLine& line) { m_section = line; m_hasSection = true; }
    void clearSection() { m_hasSection = false; }

    // A straight section in world space (y vertical) along x at depth `z`, from x0 to
    // x1 and from y0 to y1.
    static geom::RandomLine sectionAlongX(double z, double x0, double x1, double y0, double y1);

private:
    core::mat4 m_worldToScreen;
    bool m_showAll = true;
    std::set<int> m_shown;
    geom::RandomLine m_section;
    bool m_hasSection = false;
};
