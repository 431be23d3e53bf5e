#include "znsectiondrawable.h"

#include <algorithm>
#include <cmath>

ZNSectionDrawable::~ZNSectionDrawable() = default;

double ZNSectionDrawable::distanceToSegment(const QPointF& p, const QPointF& a, const QPointF& b)
{
    const QPointF ab = b - a;
    const double lengthSquared = QPointF::dotProduct(ab, ab);
    const double t = lengthSquared > 0.0 ? std::clamp(QPointF::dotProduct(p - a, ab) / lengthSquared, 0.0, 1.0) : 0.0;
    const QPointF foot = a + ab * t;
    return std::hypot(p.x() - foot.x(), p.y() - foot.y());
}
