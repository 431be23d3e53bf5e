#include "orthographicviewer.h"

core::vec2 OrthographicViewer::projectToScreen(const core::vec3& point) const
{
    const core::vec3 p = m_worldToScreen.transformPoint(point);
    return {p.x, p.y};
}

bool OrthographicViewer::isPatchShown(const ZNObject*, int patchId) const
{
    return m_showAll || m_shown.count(patchId) > 0;
}

bool OrthographicViewer::getShownRandomLine(geom::RandomLine& line) const
{
    if (!m_hasSection) return false;
    line = m_section;
    return true;
}

geom::RandomLine OrthographicViewer::sectionAlongX(double z, double x0, double x1, double y0,
                                                   double y1)
{
    geom::RandomLine line;
    line.nodes.add(core::vec2(x0, z));
    line.nodes.add(core::vec2(x1, z));
    line.verticalMin = y0;
    line.verticalMax = y1;
    line.verticalAxis = geom::RandomLine::kWorldVerticalAxis;
    return line;
}
