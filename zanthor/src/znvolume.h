#pragma once
#include <memory>
#include <mutex>

#include <QString>

#include <georef/linenumbering.h>
#include <georef/unitobject.h>

#include "zn3dimage.h"
#include "znobject.h"

// An open volume of the application: its samples on their block space, the units of its
// world coordinates, a name and the file it came from. The samples never change once
// the volume is made, so that views and workers may read them at the same time; they
// are shared, not copied, by whoever needs them longer than the volume lives.
class ZNVolume : public ZNObject {
public:
    // Null image is allowed (an empty volume).
    ZNVolume(std::shared_ptr<const ZN3DImage<float>> image, const georef::UnitObject& units,
             const QString& name, const QString& path = QString());

    // "ZNVolume".
    QString getZNObjectType() const override;

    // The samples; an empty image when the volume holds none.
    const ZN3DImage<float>& image() const;
    std::shared_ptr<const ZN3DImage<float>> sharedImage() const { return m_image; }
    const georef::BlocSpace& blocSpace() const { return image().blocSpace(); }
    const georef::UnitObject& units() const { return m_units; }
    const QString& name() const { return m_name; }
    void setName(const QString& name) { m_name = name; }
    // The file it was read from; empty for a volume made in memory.
    const QString& path() const { return m_path; }
    // The survey numbers of its inlines and crosslines.
    const georef::LineNumbering& lines() const { return m_lines; }
    void setLines(const georef::LineNumbering& lines) { m_lines = lines; }

    // Smallest and largest sample, -9999 (no value) samples and NaNs left out, computed
    // once (by the first caller, whatever its thread); (0, 0) for a volume without such
    // samples.
    std::pair<float, float> valueRange() const;

private:
    static std::pair<float, float> computeRange(const ZN3DImage<float>& samples);

    std::shared_ptr<const ZN3DImage<float>> m_image;
    georef::UnitObject m_units;
    QString m_name;
    QString m_path;
    georef::LineNumbering m_lines;
    mutable std::once_flag m_rangeOnce;
    mutable std::pair<float, float> m_range{0.0f, 0.0f};
};
