#pragma once
#include <vector>

#include <QList>
#include <QString>
#include <QStringList>

#include <core/multiarray.h>
#include <core/vec3.h>
#include <geom/line.h>
#include <georef/crs.h>

#include "znfaultstick.h"

class ZN3DObjectDraw;

// Fault stick files for the host's import and export. A fault stick file is a fault set
// file of picked sticks (object type "ZNPickedFaultPatchManager"); each read fills a
// temporary fault set with readPickedFault and extracts what is asked for, each write
// saves a temporary fault set built from the caller's sticks with writePickedFault.
//
// `is2D` selects sticks picked on 2D lines (the 2D form of the file) or 3D sticks and is
// passed on unchanged; the 2D and 3D variants only fix it. Results are in fault order
// (the fault set's descriptor order). Every reader returns a newly allocated result,
// owned by the caller, empty when the file is missing, is not a fault stick file or
// cannot be read; no message is sent, except by isFaultStickDomainInTime.
class ZNFaultApiFunctions {
public:
    // Arguments passed on to the fault set and the 3D fault patch.
    static constexpr int kUtmPrecision = 100;       // fault sets built from sticks
    static constexpr int kTimePrecision = 25;
    static constexpr int kInterpolationSize = 11;   // fault sets built from lines
    static constexpr int kStickColumnStep = 5;      // getFaultStick
    static constexpr int kNoProgressBar = -2;       // readPickedFault

    // A "ZN3DObjectDraw" file gives the one triangulated object it holds; a fault stick
    // file gives one meshed ZN3DFaultPatch per fault (read in the 3D form).
    static QList<ZN3DObjectDraw*>* readFault(const QString& path);
    // One row per fault: the sticks cut from the fault's mesh (every 5th column of its
    // block space), named after the fault (read in the 3D form).
    static core::MultiArray<ZNFaultStick>* readFaultStick(const QString& path);
    // The fault names cut to their base name: the text after the last "/" up to the
    // first ".", so "dir/F1.old" gives "F1" (kept so for the host's lists).
    static QStringList readFaultStickNames(const QString& path, bool is2D);
    static QStringList read2DFaultStickNames(const QString& path);
    static QStringList read3DFaultStickNames(const QString& path);
    // One CRS per patch that holds picked points, in patch order: a patch without points
    // gives none, so the list may be shorter than the faults. The caller deletes each.
    static std::vector<georef::Crs*>* readFaultStickCrs(const QString& path, bool is2D);
    static std::vector<georef::Crs*>* read2DFaultStickCrs(const QString& path);
    static std::vector<georef::Crs*>* read3DFaultStickCrs(const QString& path);
    // One row per fault: the x, y, z of every picked point of the fault, separators
    // (x = -9999) included.
    static core::MultiArray<core::vec3>* readFaultStickPolyLine(const QString& path, bool is2D);
    static core::MultiArray<core::vec3>* read2DFaultStickPolyLine(const QString& path);
    static core::MultiArray<core::vec3>* read3DFaultStickPolyLine(const QString& path);
    // True when the units of the fault set's middle patch are in time. Any file that is
    // not a fault stick file sends "Unknown fault stick format" (kind 1) and gives false.
    static bool isFaultStickDomainInTime(const QString& path, bool is2D);
    static bool is2DFaultStickDomainInTime(const QString& path);
    static bool is3DFaultStickDomainInTime(const QString& path);

    // Saves one fault per row of `sticks` (separators between sticks) with the vertical
    // unit millisecond when `inTime`, metre otherwise, and `crs` on every patch when it
    // is valid (not empty, not geographic). Names are given to the faults only when
    // there are as many as faults; otherwise the faults keep the names the fault set
    // gives them. The result of writePickedFault.
    static bool writeFaultStick(const QString& path, const QStringList& names,
                                const core::MultiArray<core::vec3>& sticks, bool is2D,
                                bool inTime, const georef::Crs& crs);
    static bool write2DFaultStick(const QString& path, const QStringList& names,
                                  const core::MultiArray<core::vec3>& sticks, bool inTime,
                                  const georef::Crs& crs);
    static bool write3DFaultStick(const QString& path, const QStringList& names,
                                  const core::MultiArray<core::vec3>& sticks, bool inTime,
                                  const georef::Crs& crs);
    // The same from two-point sticks, in the 3D form, without CRS.
    static bool write3DFaultStick(const QString& path, const QStringList& names,
                                  const core::MultiArray<geom::Line>& sticks, bool inTime);
};
