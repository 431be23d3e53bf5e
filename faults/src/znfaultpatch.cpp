#include "znfaultpatch.h"

#include <algorithm>
#include <cmath>

#include <core/conventions.h>
#include <geom/symmetriceigen.h>

namespace {
constexpr double kRadToDeg = 180.0 / M_PI;
const core::vec3 kDefaultSampling(100.0, 25.0, 100.0);

// sqrt(1 - t^2), with rounding noise that pushes t^2 past 1 read as 0.
double sineFromCosine(double t) { return std::sqrt(std::max(0.0, 1.0 - t * t)); }
} // namespace

ZNFaultPatch::ZNFaultPatch() { init(); }

void ZNFaultPatch::init()
{
    m_nbPoint = 0;
    std::fill(std::begin(m_sums), std::end(m_sums), 0.0);
    setOrigin(core::kNoValue, core::kNoValue, core::kNoValue);
    m_is2dFaultPatch = false;
    m_samplingVect = kDefaultSampling;
}

void ZNFaultPatch::clearParameters()
{
    m_nbPoint = 0;
    std::fill(std::begin(m_sums), std::end(m_sums), 0.0);
}

void ZNFaultPatch::addPoint(const core::vec3& p)
{
    ++m_nbPoint;
    addToSums(p);
}

void ZNFaultPatch::addToSums(const core::vec3& p)
{
    m_sums[SumX] += p.x;
    m_sums[SumY] += p.y;
    m_sums[SumZ] += p.z;
    m_sums[SumXX] += p.x * p.x;
    m_sums[SumYY] += p.y * p.y;
    m_sums[SumZZ] += p.z * p.z;
    m_sums[SumXY] += p.y * p.x;
    m_sums[SumXZ] += p.z * p.x;
    m_sums[SumYZ] += p.y * p.z;
}

ZNFaultPatch ZNFaultPatch::operator+(const ZNFaultPatch& b) const
{
    ZNFaultPatch r(*this);
    r.m_nbPoint += b.m_nbPoint;
    for (int i = 0; i < SumCount; ++i) r.m_sums[i] += b.m_sums[i];
    r.m_is2dFaultPatch = b.m_is2dFaultPatch;
    return r;
}

core::vec3 ZNFaultPatch::getCDG() const
{
    const double n = m_nbPoint;
    return {m_sums[SumX] / n, m_sums[SumY] / n, m_sums[SumZ] / n};
}

void ZNFaultPatch::fillPatchMatrix(double out[9]) const
{
    std::fill(out, out + 9, 0.0);
    if (m_nbPoint < kMinPointsForCovariance) return;
    const double n = m_nbPoint;
    const core::vec3 m = getCDG();
    out[0] = (m_sums[SumXX] - n * m.x * m.x) / n;
    out[1] = out[3] = (m_sums[SumXY] - n * m.x * m.y) / n;
    out[2] = out[6] = (m_sums[SumXZ] - n * m.x * m.z) / n;
    out[4] = (m_sums[SumYY] - n * m.y * m.y) / n;
    out[5] = out[7] = (m_sums[SumYZ] - n * m.y * m.z) / n;
    out[8] = (m_sums[SumZZ] - n * m.z * m.z) / n;
}

std::unique_ptr<double[]> ZNFaultPatch::getPatchMatrix() const
{
    std::unique_ptr<double[]> matrix(new double[9]);
    fillPatchMatrix(matrix.get());
    return matrix;
}

namespace {
std::array<geom::EigenPair, 3> eigenPairsOf(const ZNFaultPatch& patch)
{
    double covariance[9];
    patch.fillPatchMatrix(covariance);
    return geom::symmetricEigenPairs(covariance);
}
} // namespace

core::vec3 ZNFaultPatch::getNormal() const
{
    const core::vec3 v = eigenPairsOf(*this)[2].vector;
    return v / v.length();
}

core::mat4 ZNFaultPatch::getRegressionMatrix() const
{
    const auto pairs = eigenPairsOf(*this);
    core::mat4 r = core::mat4::zero();
    for (int row = 0; row < 3; ++row) {
        r.m[4 * row + 0] = pairs[row].vector.x;
        r.m[4 * row + 1] = pairs[row].vector.y;
        r.m[4 * row + 2] = pairs[row].vector.z;
    }
    r.m[15] = 1.0;
    return r;
}

core::vec3 ZNFaultPatch::getSigma() const
{
    const auto pairs = eigenPairsOf(*this);
    return {pairs[0].value, pairs[1].value, pairs[2].value};
}

double ZNFaultPatch::getDipAngle() const
{
    return std::fabs(std::asin(getNormal().y)) * kRadToDeg;
}

double ZNFaultPatch::getDipAngleBis() const
{
    const core::vec3 n = getNormal();
    if (n.x == core::kNoValueReal) return core::kNoValueReal;
    return 90.0 + std::asin(n.y / n.length()) * kRadToDeg;
}

double ZNFaultPatch::getMergeCost(const ZNFaultPatch& b) const
{
    if (m_nbPoint < kMinPointsForMergeCost || b.m_nbPoint < kMinPointsForMergeCost) return -1.0;
    const core::vec3 nA = getNormal();
    const core::vec3 nB = b.getNormal();
    const core::vec3 d = getCDG() - b.getCDG();
    const core::vec3 u = d / d.length();                  // direction joining the centres
    const double sineA = sineFromCosine(u.dot(nA));       // 1 when B lies in A's plane
    const double sineB = sineFromCosine(u.dot(nB));       // 1 when A lies in B's plane
    const double parallelism = std::fabs(nA.dot(nB));     // 1 for parallel planes
    return std::min(sineB, std::min(sineA, parallelism));
}

double ZNFaultPatch::getNormalMergeCost(const ZNFaultPatch& b) const
{
    return std::fabs(getNormal().dot(b.getNormal()));
}

double ZNFaultPatch::getDipAngleMergeCost(const ZNFaultPatch& b) const
{
    return std::fabs(getDipAngleBis() - b.getDipAngleBis());
}

double ZNFaultPatch::getSigmaMergeCost() const
{
    return 1.0 - getSigma().z / m_nbPoint;
}

void ZNFaultPatch::getOrigin(int16_t& x, int16_t& y, int16_t& z) const
{
    x = m_origin[0];
    y = m_origin[1];
    z = m_origin[2];
}

void ZNFaultPatch::setOrigin(int16_t x, int16_t y, int16_t z)
{
    m_origin[0] = x;
    m_origin[1] = y;
    m_origin[2] = z;
}

QString ZNFaultPatch::getZNObjectType() const { return QStringLiteral("ZNFaultPatch"); }

namespace {
template <class Document>
auto patchHeader(Document& doc, const QString& type, const georef::Crs& crs)
    -> decltype(doc.createElement(type))
{
    auto e = doc.createElement(type);
    e.appendChild(crs.createElement(doc));
    return e;
}
} // namespace

QDomElement ZNFaultPatch::createHeader(QDomDocument& doc) const
{
    return patchHeader(doc, getZNObjectType(), m_unitObject.getCrs());
}

ZNXmlElement ZNFaultPatch::createHeader(ZNXmlTree& doc) const
{
    return patchHeader(doc, getZNObjectType(), m_unitObject.getCrs());
}

namespace {
template <class Element>
void readPatchHeader(const Element* header, georef::UnitObject& units)
{
    if (header && !header->isNull())
        units.setCrs(georef::Crs::fromElement(header->firstChildElement(QStringLiteral("ZNCrs"))));
}
} // namespace

void ZNFaultPatch::getHeader(const QDomElement* header) { readPatchHeader(header, m_unitObject); }

void ZNFaultPatch::getHeader(const ZNXmlElement* header) { readPatchHeader(header, m_unitObject); }
