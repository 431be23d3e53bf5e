#pragma once
#include <vector>

#include <QString>

#include <core/vec3.h>

#include "textfields.h"
#include "verticaldomain.h"

// The framing shared by the GOCAD ASCII objects this library reads (PLine, TSurf): a file
// holds one or more objects, each
//
//     GOCAD <type> [version]
//     HEADER {            (name:<name>, quoted when it holds spaces, among other keys)
//     }
//     GOCAD_ORIGINAL_COORDINATE_SYSTEM ... END_ORIGINAL_COORDINATE_SYSTEM   (optional)
//     <body lines>
//     END
//
// Lines starting with "#" are comments. ZPOSITIVE Elevation means the file's z grows
// upwards and is turned into Z positive down; the third AXIS_UNIT tells the domain.
namespace fault::exchange {

// What the framing has learnt about the object being read.
struct GocadHeader {
    QString type;
    QString name;                  // from the HEADER block, quotes removed; may be empty
    bool elevationPositive = false;
    VerticalDomain domain = VerticalDomain::Unknown;
};

// Receives the objects of a GOCAD file from GocadObjectParser.
class GocadBodyHandler {
public:
    virtual ~GocadBodyHandler() = default;
    // One body line, split into fields (keyword first); false, with problem, to stop.
    virtual bool bodyLine(const GocadHeader& header, const std::vector<TextField>& fields,
                          QString& problem) = 0;
    // The END of an object; false, with problem, to stop.
    virtual bool endObject(const GocadHeader& header, QString& problem) = 0;
};

// Walks the lines of a GOCAD file and hands the body lines of every object of
// `expectedType` to the handler. An object of another type, a line outside any object
// or a file that ends inside an object is an error.
class GocadObjectParser {
public:
    GocadObjectParser(const QString& expectedType, GocadBodyHandler& handler)
        : m_expectedType(expectedType), m_handler(handler) {}

    bool parse(const QString& line, QString& problem);
    // Called after the last line: false, with problem, when an object is left open.
    bool finish(QString& problem) const;

private:
    enum class State { Outside, Body, Header, CoordinateSystem };
    bool parseOutside(const QString& trimmed, QString& problem);
    void parseHeaderLine(const QString& trimmed);
    void parseCoordinateSystemLine(const QString& trimmed);

    QString m_expectedType;
    GocadBodyHandler& m_handler;
    State m_state = State::Outside;
    GocadHeader m_header;
    std::vector<TextField> m_fields;
};

// Reads "VRTX id x y z ..." or "PVRTX id x y z p1 p2 ...": the vertex id, its world
// position and the reals after z (properties; a field that is not a number gives NaN).
// False, with problem, for a missing or unreadable id or coordinate.
bool parseGocadVertex(const GocadHeader& header, const std::vector<TextField>& fields, int& id,
                      core::vec3& world, std::vector<double>& properties, QString& problem);

// The header of one object, from "GOCAD <type> 1" to END_ORIGINAL_COORDINATE_SYSTEM, with
// ZPOSITIVE Depth and the Z unit of `domain`; the name quoted when it holds a space.
QString gocadObjectHeader(const QString& type, const QString& name, VerticalDomain domain);

// "<keyword> <id> <X> <Y> <Z>" for a world point (axes: worldaxes.h).
QString gocadVertexLine(const char* keyword, int id, const core::vec3& world);

} // namespace fault::exchange
