#include "znvolume.h"

#include <cmath>

#include <core/conventions.h>

ZNVolume::ZNVolume(std::shared_ptr<const ZN3DImage<float>> image, const georef::UnitObject& units,
                   const QString& name, const QString& path)
    : m_image(std::move(image)), m_units(units), m_name(name), m_path(path)
{
}

QString ZNVolume::getZNObjectType() const
{
    return QStringLiteral("ZNVolume");
}

const ZN3DImage<float>& ZNVolume::image() const
{
    static const ZN3DImage<float> empty;
    return m_image ? *m_image : empty;
}

std::pair<float, float> ZNVolume::valueRange() const
{
    std::call_once(m_rangeOnce, [this] { m_range = computeRange(image()); });
    return m_range;
}

std::pair<float, float> ZNVolume::computeRange(const ZN3DImage<float>& samples)
{
    bool any = false;
    float low = 0.0f;
    float high = 0.0f;
    const float* data = samples.data();
    for (std::size_t i = 0; data && i < samples.voxelCount(); ++i) {
        const float v = data[i];
        if (std::isnan(v) || v == static_cast<float>(core::kNoValueReal)) continue;
        if (!any) {
            low = high = v;
            any = true;
        } else {
            low = std::min(low, v);
            high = std::max(high, v);
        }
    }
    return {low, high};
}
