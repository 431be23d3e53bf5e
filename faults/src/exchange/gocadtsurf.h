#pragma once
#include <vector>

#include <QString>

#include "exchangestatus.h"
#include "trianglemesh.h"
#include "verticaldomain.h"

// GOCAD TSurf surfaces: one object per surface, the minimal valid form
//
//     GOCAD TSurf 1
//     HEADER {
//     name:"Fault A"                (quoted when it holds spaces)
//     }
//     GOCAD_ORIGINAL_COORDINATE_SYSTEM
//     NAME Default
//     AXIS_NAME "X" "Y" "Z"
//     AXIS_UNIT "m" "m" "ms"         ("m" in depth)
//     ZPOSITIVE Depth
//     END_ORIGINAL_COORDINATE_SYSTEM
//     TFACE
//     VRTX 1 <X> <Y> <Z>
//     TRGL 1 2 3
//     END
//
// with no property. Vertex ids count from 1 in each object.
namespace fault::exchange {

// Reads every TSurf object of the file, one mesh each, into `meshes` (replaced; untouched
// on failure) and, when given, the vertical domain of the last object that names one into
// `domain`. Several TFACE parts of one object go into one mesh; PVRTX properties are
// ignored; ATOM repeats an earlier vertex; a TRGL naming an unknown vertex id is an error.
// An object without a name is named `defaultName`.
ExchangeStatus readGocadTSurf(const QString& path, std::vector<TriangleMesh>& meshes,
                              VerticalDomain* domain = nullptr,
                              const QString& defaultName = QStringLiteral("Unnamed"));

// Writes one TSurf object per mesh, coordinates with six decimals. Fails, writing
// nothing, for a triangle with an index outside its mesh or a name holding a double quote
// or a line break.
ExchangeStatus writeGocadTSurf(const QString& path, const std::vector<TriangleMesh>& meshes,
                               VerticalDomain domain);

} // namespace fault::exchange
