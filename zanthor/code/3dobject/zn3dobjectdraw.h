#pragma once
#include <QBrush>
#include <QObject>
#include <QPen>
#include <QString>
#include <QVariant>

#include "3dobject/zn3dobject.h"

class ZNPropertySheet;

// A triangulated surface as a drawable, persistent object: ZN3DObject plus the display
// (edge pen, fill brush, transparency, hidden flag), the identity in the viewers (unique
// id, widget name, file name), the spatial units, and the storage of its geometry.
//
// Header element "ZN3DObjectDraw": "numberOfPoint", "numberOffacette", "pen", "brush",
// "pixelSize", "recordSize", "unitsObject", in this order.
//
// Data block (see ZN3DObjectRecords): numberOfPoint point records of recordSize-byte
// coordinates, then numberOffacette facette records; no counts, which come from the
// header. The stream form (writeDataStream / readDataStream) puts the two counts, as
// 32-bit integers, before the same blocks.
//
// recordSize is 4 (the default) or 8. Any other value is kept but invalid: point blocks
// are then neither written nor read, the assertion "recordSize == 8 || recordSize == 4"
// is printed, and the facette block follows directly.
class ZN3DObjectDraw : public QObject, public ZN3DObject {
    Q_OBJECT
public:
    static constexpr int kDefaultRecordSize = 4;
    static constexpr qint64 kMissingDataOffset = 0x7fffffff;  // data offset of a non-object file
    static constexpr qint64 kEstimateMargin = 14645;          // bytes, see getEstimatedFileSize
    static constexpr int kEstimateFactor = 3;
    static constexpr int kMinimumEdgeWidth = 1;
    static constexpr int kMaximumEdgeWidth = 10;
    static constexpr int kDefaultSettingValue = 1;            // width and styles of absent settings

    explicit ZN3DObjectDraw(QObject* parent = nullptr);

    // "ZN3DObjectDraw".
    QString getZNObjectType() const override;

    int getRecordSize() const { return m_recordSize; }
    void setRecordSize(int recordSize) { m_recordSize = recordSize; }
    const QPen& getPen() const { return m_pen; }
    void setPen(const QPen& pen) { m_pen = pen; }
    const QBrush& getBrush() const { return m_brush; }
    void setBrush(const QBrush& brush) { m_brush = brush; }
    // 0 transparent .. 1 opaque.
    float getTransparency() const { return m_transparency; }
    void setTransparency(float t) { m_transparency = t; }
    bool isHidden() const { return m_hidden; }
    void setHidden(bool hidden) { m_hidden = hidden; }
    int getUniqueObjectId() const { return m_uniqueObjectId; }
    void setUniqueObjectId(int id) { m_uniqueObjectId = id; }
    const QString& getWidgetName() const { return m_widgetName; }
    void setWidgetName(const QString& name) { m_widgetName = name; }
    const QString& getFileName() const { return m_fileName; }
    void setFileName(const QString& name) { m_fileName = name; }
    georef::UnitObject GetUnitObject() const override { return m_unitsObject; }
    void SetUnitObject(const georef::UnitObject& units) override { m_unitsObject = units; }
    // Whether the object shows a fill; objects without one store no brush style in their
    // header settings.
    virtual bool hasFill() const { return true; }

    // The header element (see the class comment), created in `doc`.
    QDomElement createHeader(QDomDocument& doc) const override;
    // Reads a header element: counts, pen, brush, pixel size ((1, 1, 1) when missing),
    // record size (4 when missing), units. The counts (0 when missing) are those of the
    // data block the next data read takes; the arrays are emptied now and sized by that
    // read, once the data is known to hold them, so that a header alone never
    // allocates what its file cannot hold. False, the object unchanged, for a null
    // element or a count outside 0..2^31-1.
    bool getHeader(const QDomElement* header) override;

    // Display settings kept apart from the geometry, appended to `parent`:
    // "ZN3DObjectDraw" with "objectWidthPen", "objectStylePen" and, with a fill,
    // "objectStyleBrush"; "Object3DDrawInternal" with "WidgetName", "FileName",
    // "IsHidden", "Edge_style" (the edge pen), "Fill_style" (the brush), "Transparency",
    // "UniqueObjectId".
    void createHeaderSettings(QDomDocument& doc, QDomElement& parent) const;
    // Reads them back from `parent`. In "ZN3DObjectDraw" an absent width or style reads
    // as 1, and all are applied at once; from "Object3DDrawInternal" only "Edge_style",
    // "Fill_style", "Transparency", "IsHidden" and "UniqueObjectId" are read, each kept
    // when absent. A missing element changes nothing.
    void getHeaderSettings(const QDomElement& parent);

    // Writes the data block at `offset` of `file`; false when a write fails.
    bool writeData(QIODevice& file, qint64 offset) const override;
    // Reads the data block of the object file at `path`: the counts of the last header
    // read, or as many records as the arrays hold when no header was read since the last
    // load. False, the object unchanged, when the file cannot be
    // opened (message "Error when opening <path>", kind FileError), is too short, or
    // has no data offset.
    bool getData(const QString& path);
    // The same, reading only the first min(points, maxPoints) points and no facette:
    // the object then holds those points and no facette. maxPoints 0 (or less) is a
    // full read.
    bool getData(const QString& path, int maxPoints);
    // A full read through a low-level descriptor, for files beyond 2 GiB. False, the
    // object unchanged, when the data offset is missing, the file cannot be opened
    // (assertion "_file!=-1") or any record is short.
    bool getDataLargeFile(const QString& path);
    // Header and data of the object file at `path`: checks that the data the header
    // claims fits in the file before anything is allocated. False, the object
    // unchanged, otherwise. With an invalid record size the points are left as they are.
    bool readObjectFile(const QString& path);

    // Stream form: the point count and the facette count (signed 32-bit), then the blocks.
    bool writeDataStream(QIODevice& stream) const override;
    bool readDataStream(ZNByteSource& stream) override;

    // 3 x (4 x facettes + recordSize x points + 14645) bytes: a generous estimate kept
    // as it is for the callers that size their buffers with it. 0, after an assertion,
    // for an invalid record size.
    qint64 getEstimatedFileSize() const;

    // The "Edge" and "Fill" groups: "Style Edge" (the six pen styles, editor
    // "StyleSettings"), "Width Edge" (1 to 10, step 1, editor "WidthSettings") and
    // "Style Fill" (the fifteen brush styles, editor "StyleSettingsFill").
    virtual void createProperty(ZNPropertySheet& sheet) const;
    // Applies an edit of one of those rows; true when the value changed. An unknown id,
    // a value of the wrong type or outside the row's range changes nothing.
    virtual bool updateProperty(const QString& id, const QVariant& value);

private:
    // What a header element holds.
    struct HeaderValues {
        int points = 0;
        int facettes = 0;
        QPen pen;
        QBrush brush;
        core::vec3 pixelSize;
        int recordSize = kDefaultRecordSize;
        georef::UnitObject units;
        bool hasUnits = false;
    };
    // Geometry read from a data block, kept by the object only once complete.
    struct Geometry {
        core::Array<core::vec3> points;
        core::Array<ZNFacette> facettes;
        bool hasPoints = false;  // false: the point block was skipped (invalid record size)
    };

    // Parses `header` with the current values as fallbacks; false for negative counts.
    bool parseHeader(const QDomElement& header, HeaderValues& values) const;
    void applyHeader(const HeaderValues& values);
    // Reads `points` point records of `recordSize` and `facettes` facette records from
    // the source's position; false on a short read or a failed allocation.
    static bool readBlocks(ZNByteSource& source, int recordSize, int points, int facettes,
                           const char* function, Geometry& geometry);
    // Replaces the object's geometry by `geometry` (points only when it has them).
    void keepGeometry(Geometry& geometry);
    // Reads the data block at `offset` for the current arrays, `maxPoints` as for getData.
    bool readDataBlock(ZNByteSource& source, qint64 offset, int maxPoints, const char* function);
    bool writeBlocks(QIODevice& out, const char* function) const;
    // True for a record size of 4 or 8; prints the assertion otherwise.
    static bool checkRecordSize(int recordSize, const char* function);

    int m_recordSize = kDefaultRecordSize;
    int m_headerPoints = -1;    // counts of the data block announced by the last header read,
    int m_headerFacettes = -1;  // -1 once the arrays hold the data (or none was read)
    QPen m_pen;
    QBrush m_brush;
    float m_transparency = 1.0f;
    bool m_hidden = false;
    int m_uniqueObjectId = -1;
    QString m_widgetName;
    QString m_fileName;
    georef::UnitObject m_unitsObject;
};
