#pragma once
#include <cstdint>
#include <optional>

#include <QDomDocument>
#include <QDomElement>
#include <QPen>
#include <QString>

#include <znxmltree.h>

#include <core/array.h>
#include <geom/rect2d.h>

// The descriptor of one fault of a fault set: its identity (id, name), its pen, the ids
// of the fault set's patches that make it up, and the settings used when the fault is
// meshed and drawn. It holds no geometry. The fault set keeps one per fault; the drawable
// 3D fault patch inherits it so the same settings travel with a displayed fault.
//
// The descriptor never changes its saved flag by itself: the fault set maintains it.
class ZN3DFaultPatchLight {
public:
    // Defaults set by init().
    static constexpr int kDefaultUtmPrecision = 100;
    static constexpr int kDefaultTimePrecision = 25;
    static constexpr int kDefaultFilterSize = 7;
    static constexpr int kDefaultInterpolationSize = 11;
    static constexpr int kDefaultMeshingMethod = 1;
    static constexpr float kDefaultTransparency = 0.5f;
    // Ranges of the gridding settings, as the property sheet offers them.
    static constexpr int kMinUtmPrecision = 50, kMaxUtmPrecision = 500;
    static constexpr int kMinTimePrecision = 1, kMaxTimePrecision = 100;
    static constexpr int kMinFilterSize = 1, kMaxFilterSize = 101;
    static constexpr int kMinInterpolationSize = 5, kMaxInterpolationSize = 1000;
    static constexpr int kMinSpare = 0, kMaxSpare = 100;  // extrapolation distance
    // Largest draw of the generator the pen colour formula is written for.
    static constexpr int kRandomDrawMax = 32767;

    // Empty patch list, then init().
    ZN3DFaultPatchLight();
    // init(), then the pen, the id, the name, and the three integers as UTM precision,
    // time precision and filter size. The bool and the rectangle are accepted and
    // ignored on purpose: callers still pass them.
    ZN3DFaultPatchLight(const QPen& pen, int faultId, const QString& name, int utmPrecision,
                        int timePrecision, int filterSize, bool, const geom::Rect2d&);
    ZN3DFaultPatchLight(const ZN3DFaultPatchLight&) = default;
    ZN3DFaultPatchLight& operator=(const ZN3DFaultPatchLight&) = default;
    virtual ~ZN3DFaultPatchLight() = default;

    // "ZN3DFaultPatchLight".
    virtual QString getZNObjectType() const;

    // Every default: a pen of random colour, id -1, name "Unnamed", UTM precision 100,
    // time precision 25, filter size 7, spare 0, interpolation size 11, meshing method
    // 1, picked points not drawn, picking intersection drawn, preview shown, transparency
    // 0.5, no link, not saved. The patch list is left as it is.
    void init();

    // Copies every setting of `other` (pen, id, name, the six integers, the three flags,
    // transparency, link) and, when `withPatchList`, its patch list. The saved flag is
    // not copied. A null `other` is reported and changes nothing.
    void copy(const ZN3DFaultPatchLight* other, bool withPatchList);

    // True when the name is neither empty nor "Unnamed".
    bool IsNamed() const;
    bool isSaved() const { return m_saved; }
    void setSaved(bool saved) { m_saved = saved; }

    // The element "ZN3DFaultPatchLight" of the fault set's header, created in `doc`:
    // "pen", "faultId", "faultName", "utmPrecision", "timePrecision", "filterSize",
    // "interpolationSize", "meshingMethod", "drawPickedPoint", "drawPickingIntersection",
    // "showPreview", "transparency". The name is written as its complete base name as a
    // file name (ZNFileName::completeBaseName: "dir/F1.v2" and "dir\\F1.v2" are written
    // "F1"): names are sanitised on every save, kept for file compatibility.
    QDomElement createHeader(QDomDocument& doc) const;
    // The same element in a flat XML tree: what the fault set writes for each fault.
    ZNXmlElement createHeader(ZNXmlTree& doc) const;
    // Reads an element written by createHeader. Missing keys keep their values, except
    // "meshingMethod", which reads as 0 when missing (kept for file compatibility). The
    // picking intersection flag is not read from `header` but from the key
    // "ShowPickingIntersection" of the user's 3D viewer parameters file; it is kept when
    // that file or key is missing. A null header changes nothing.
    void getHeader(const QDomElement* header);
    // The same with the viewer's picking-intersection default already looked up (see
    // viewerPickingIntersection): readers of many descriptors look it up once.
    void getHeader(const QDomElement* header, std::optional<bool> viewerPickingIntersection);
    // The same from an element of a flat XML tree (a null element changes nothing).
    void getHeader(const ZNXmlElement* header, std::optional<bool> viewerPickingIntersection);
    // Reads only the id and the name of a header, as getHeader reads them: what a reader
    // that lists the faults of a file needs, at a fraction of the cost.
    void getIdentity(const ZNXmlElement* header);
    // The "ShowPickingIntersection" value of the user's 3D viewer settings file: "1" true,
    // "0" false, nothing when the file or the key is missing or holds anything else.
    static std::optional<bool> viewerPickingIntersection();

    // The colour channel computed from one draw of the generator, reduced to
    // 0..kRandomDrawMax: the integer part of draw * 256 / 32767 in single precision. The
    // largest draw gives 256, out of the colour range; kept as it is.
    static int randomChannel(int draw);

    const QPen& getPen() const { return m_pen; }
    void setPen(const QPen& pen) { m_pen = pen; }
    int getFaultId() const { return m_faultId; }
    void setFaultId(int id) { m_faultId = id; }
    QString GetFaultName() const { return m_faultName; }
    void SetFaultName(const QString& name) { m_faultName = name; }

    // Ids of the owning fault set's patches that make up this fault.
    core::Array<int>& getPatchList() { return m_patchList; }
    const core::Array<int>& getPatchList() const { return m_patchList; }

    int getUtmPrecision() const { return m_utmPrecision; }
    void setUtmPrecision(int v) { m_utmPrecision = v; }
    int getTimePrecision() const { return m_timePrecision; }
    void setTimePrecision(int v) { m_timePrecision = v; }
    int getFilterSize() const { return m_filterSize; }
    void setFilterSize(int v) { m_filterSize = v; }
    int getSpare() const { return m_spare; }
    void setSpare(int v) { m_spare = v; }
    int getInterpolationSize() const { return m_interpolationSize; }
    void setInterpolationSize(int v) { m_interpolationSize = v; }
    int getMeshingMethod() const { return m_meshingMethod; }
    void setMeshingMethod(int v) { m_meshingMethod = v; }
    bool getDrawPickedPoint() const { return m_drawPickedPoint; }
    void setDrawPickedPoint(bool v) { m_drawPickedPoint = v; }
    bool getDrawPickingIntersection() const { return m_drawPickingIntersection; }
    void setDrawPickingIntersection(bool v) { m_drawPickingIntersection = v; }
    bool getShowPreview() const { return m_showPreview; }
    void setShowPreview(bool v) { m_showPreview = v; }
    // The stored opacity of the fault's surface: 0 transparent .. 1 opaque (what the 3D
    // fault patch restores before drawing and shows as "Transparency").
    float getTransparency() const { return m_transparency; }
    void setTransparency(float v) { m_transparency = v; }
    // An opaque value owned by whoever set it; 0 for none.
    uint64_t getLink() const { return m_link; }
    void setLink(uint64_t link) { m_link = link; }

private:
    template <class Document>
    auto writeHeader(Document& doc) const -> decltype(doc.createElement(QString()));
    template <class Element>
    void readHeader(const Element& e, std::optional<bool> viewerPickingIntersection);
    template <class Element>
    void readIdentity(const Element& e);

    QPen m_pen;                              // edge pen; colour drawn at random by init
    int32_t m_faultId = -1;                  // id in the owning fault set, -1 until inserted
    QString m_faultName;                     // "Unnamed" until named
    core::Array<int> m_patchList{1};         // patch ids, grows one slot at a time
    int32_t m_utmPrecision = kDefaultUtmPrecision;         // lateral meshing step
    int32_t m_timePrecision = kDefaultTimePrecision;       // vertical meshing step
    int32_t m_filterSize = kDefaultFilterSize;             // smoothing filter length
    int32_t m_spare = 0;                                   // opaque, copied only
    int32_t m_interpolationSize = kDefaultInterpolationSize;
    int32_t m_meshingMethod = kDefaultMeshingMethod;       // 0 convex, 1 minimum envelop
    bool m_drawPickedPoint = false;
    bool m_drawPickingIntersection = true;
    bool m_showPreview = true;
    float m_transparency = kDefaultTransparency;
    uint64_t m_link = 0;                     // opaque, copied only
    bool m_saved = false;                    // written since the last change
};
