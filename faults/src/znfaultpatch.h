#pragma once
#include <cstdint>
#include <memory>

#include <QDomDocument>
#include <QDomElement>

#include <znxmltree.h>
#include <QString>

#include <core/mat4.h>
#include <core/vec3.h>
#include <geom/rect2d.h>
#include <georef/unitobject.h>

// The parameter record of one patch. It accumulates the first and second moments of the
// patch's points and derives everything else from them: centre of gravity, covariance,
// best-fit plane (normal and regression frame), spread (sigma), dip, and the scores of
// merging two patches. It keeps no points, so merging two patches is an addition of two
// records and every query is constant-time (one 3x3 eigen-decomposition, not cached).
//
// Coordinates are those the owner accumulates: grid indices (inline, crossline, sample)
// for automatic patches, the fault set's space for picked ones.
class ZNFaultPatch {
public:
    // Index of each moment in the sums array.
    enum Sum { SumX, SumY, SumZ, SumXX, SumYY, SumZZ, SumXY, SumXZ, SumYZ, SumCount };

    static constexpr int kMinPointsForMergeCost = 5;       // below it getMergeCost is -1.0
    static constexpr int kMinPointsForCovariance = 4;      // below it the matrix is zeros

    // Members constructed (sampling vector and rect zeroed), then init(). The father link
    // is -9999 until the owning fault set sets it.
    ZNFaultPatch();
    ZNFaultPatch(const ZNFaultPatch&) = default;
    ZNFaultPatch& operator=(const ZNFaultPatch&) = default;

    // nbPoint 0, sums 0, origin (-9999, -9999, -9999), not 2D, sampling (100, 25, 100).
    // The father link, the unit object and the rect are kept.
    void init();
    // nbPoint 0 and the nine sums 0; every other field kept.
    void clearParameters();
    // Accumulates one point: nbPoint + 1 and its moments into the nine sums.
    void addPoint(const core::vec3& p);
    // Accumulates one point's moments into the sums without counting it (the owner sets
    // nbPoint itself when it fills a record from its voxel lists).
    void addToSums(const core::vec3& p);

    // A copy of this record whose nbPoint and sums are those of both records, and whose
    // 2D flag is taken from `b`; everything else comes from this record. The asymmetry of
    // the flag is intended: merging into a 2D patch makes a 2D result.
    ZNFaultPatch operator+(const ZNFaultPatch& b) const;

    // Centre of gravity (sums / nbPoint); non-finite for an empty record.
    core::vec3 getCDG() const;
    // The population covariance matrix, nine entries row by row, newly allocated for the
    // caller. With nbPoint <= 3 it is all zeros.
    std::unique_ptr<double[]> getPatchMatrix() const;
    // The same covariance written into `out` (no allocation).
    void fillPatchMatrix(double out[9]) const;
    // Unit normal of the best-fit plane: the eigenvector of least spread.
    core::vec3 getNormal() const;
    // Row-major storage: first eigenvector, 0, second, 0, third, 0, then 0, 0, 0, 1
    // (eigenvectors as the solver gives them, decreasing eigenvalue).
    core::mat4 getRegressionMatrix() const;
    // The three eigenvalues of the covariance, decreasing (lambda1, lambda2, lambda3).
    core::vec3 getSigma() const;
    // |asin(normal.y)| in degrees: 0 for a vertical plane, 90 for a horizontal one.
    double getDipAngle() const;
    // 90 + asin(normal.y / |normal|) in degrees, 0 to 180, which tells the two dip
    // directions apart; -9999.0 when the normal is undefined (x == -9999.0).
    double getDipAngleBis() const;

    // Planar similarity of two patches, 0 to 1, higher is better: 1 for coplanar patches
    // side by side, 0 for perpendicular planes or a centre lying along the other's
    // normal. -1.0 when either record has fewer than 5 points; non-finite for
    // coincident centres.
    double getMergeCost(const ZNFaultPatch& b) const;
    // |normal(this) . normal(b)|.
    double getNormalMergeCost(const ZNFaultPatch& b) const;
    // |getDipAngleBis(this) - getDipAngleBis(b)| in degrees.
    double getDipAngleMergeCost(const ZNFaultPatch& b) const;
    // 1 - lambda3 / nbPoint. lambda3 is already divided by nbPoint; the second division
    // is part of the score and is kept so that thresholds keep their meaning.
    double getSigmaMergeCost() const;

    int getFather() const { return m_father; }
    void setFather(int father) { m_father = father; }
    int getNbPoint() const { return m_nbPoint; }
    void setNbPoint(int n) { m_nbPoint = n; }
    // Grid position of the patch's reference voxel; (-9999, -9999, -9999) when unset.
    void getOrigin(int16_t& x, int16_t& y, int16_t& z) const;
    void setOrigin(int16_t x, int16_t y, int16_t z);
    const double* getSums() const { return m_sums; }
    const core::vec3& getSamplingVect() const { return m_samplingVect; }
    void setSamplingVect(const core::vec3& v) { m_samplingVect = v; }
    const geom::Rect2d& getRect() const { return m_rect; }
    void setRect(const geom::Rect2d& rect) { m_rect = rect; }
    bool is2dFaultPatch() const { return m_is2dFaultPatch; }
    void setIs2dFaultPatch(bool is2d) { m_is2dFaultPatch = is2d; }
    georef::UnitObject GetUnitObject() const { return m_unitObject; }
    const georef::UnitObject& unitObject() const { return m_unitObject; }
    void SetUnitObject(const georef::UnitObject& unitObject) { m_unitObject = unitObject; }

    // "ZNFaultPatch".
    QString getZNObjectType() const;
    // An element "ZNFaultPatch" holding one "ZNCrs" child: the unit object's CRS.
    QDomElement createHeader(QDomDocument& doc) const;
    ZNXmlElement createHeader(ZNXmlTree& doc) const;
    // Reads the "ZNCrs" child of `header` into the unit object's CRS; nothing else.
    void getHeader(const QDomElement* header);
    void getHeader(const ZNXmlElement* header);

private:
    int32_t m_father = -9999;             // father patch index in the owning fault set
    int32_t m_nbPoint = 0;                // points accumulated
    int16_t m_origin[3] = {0, 0, 0};      // reference voxel (inline, crossline, sample)
    double m_sums[SumCount] = {};         // see Sum
    core::vec3 m_samplingVect;            // sampling step along the three axes
    georef::UnitObject m_unitObject;      // units and CRS of the coordinates
    geom::Rect2d m_rect;                  // 2D bounding rectangle, set by the fault set
    bool m_is2dFaultPatch = false;        // picked on a 2D line
};
