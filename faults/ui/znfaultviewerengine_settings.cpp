// The fault viewer engine's settings: the header element and the property sheet.
#include "znfaultviewerengine.h"

#include <cmath>

#include <zn3dfaultpatch.h>

#include "znfaultviewericons.h"

namespace {

const QString kElement = QStringLiteral("ZNFaultViewer");
const QString kBackground = QStringLiteral("DrawerBackgroundColor");
const QString kAutoGoto = QStringLiteral("AutoGoto");
const QString kPickedPointKey = QStringLiteral("PickedPoint");
const QString kBackgroundPicking = QStringLiteral("DrawerBackgroundColorPicking");

const QString kViewerGroup = QStringLiteral("Fault Viewer");
const QString kMappingGroup = QStringLiteral("Data Mapping");
const QString kPickedPoint = QStringLiteral("Picked Point");
const QString kFreeze = QStringLiteral("Freeze");
const QString kScaleType = QStringLiteral("Scale Type");
const QString kSpatialScale = QStringLiteral("Spatial Scale");
const QString kShowScale = QStringLiteral("Show Scale");
const QString kColorScale = QStringLiteral("Color Scale");
const QString kZDomain = QStringLiteral("Z Domain");
const QString kPickingBackground = QStringLiteral("BackGround Color Picking Viewer");
const QString kSmoothing = QStringLiteral("Smoothing");
const QString kWindowSize = QStringLiteral("WindowSize");
const QString kSpatialDev = QStringLiteral("Spatial dev (px)");
const QString kVerticalDev = QStringLiteral("Vertical dev (px)");
const QString kInterpolation = QStringLiteral("Interpolation");
const QString kCorrThreshold = QStringLiteral("Corr Threshold");
const QString kSmooth = QStringLiteral("Smooth");

constexpr int kScaleDecimals = 3;     // "Spatial Scale" as typed
constexpr double kScaleStep = 0.1;
constexpr double kDeviationStep = 0.5;
constexpr double kThresholdStep = 0.05;

using Mapping = fault::FaultPlaneMappingSettings;

QString flag(bool on) { return on ? QStringLiteral("1") : QStringLiteral("0"); }

// Reads attribute `name` as a flag into `out`; anything but "0" or "1" keeps it.
void readFlag(const QDomElement& e, const QString& name, bool& out)
{
    const QString text = e.attribute(name);
    if (text == QLatin1String("0") || text == QLatin1String("1")) out = text == QLatin1String("1");
}

void readColour(const QDomElement& e, const QString& name, QColor& out)
{
    const QColor colour(e.attribute(name));
    if (colour.isValid()) out = colour;
}

void withIcon(ZNProperty& row, const QString& iconName)
{
    row.setAttribute(QStringLiteral("iconName"), iconName);
    row.setAttribute(ZNProperty::icon(), ZNFaultViewerIcons::icon(iconName));
}

bool toDouble(const QVariant& value, double low, double high, double& out)
{
    bool ok = false;
    const double v = value.toDouble(&ok);
    if (!ok || !std::isfinite(v) || v < low || v > high) return false;
    out = v;
    return true;
}

} // namespace

// ----- header settings -----

void ZNFaultViewerEngine::createHeaderSettings(QDomDocument& doc, QDomElement& parent) const
{
    QDomElement e = doc.createElement(kElement);
    e.setAttribute(kBackground, m_background.name(QColor::HexArgb));
    e.setAttribute(kAutoGoto, flag(m_autoGoto));
    e.setAttribute(kPickedPointKey, flag(m_showPicked));
    e.setAttribute(kBackgroundPicking, m_backgroundPicking.name(QColor::HexArgb));
    parent.appendChild(e);
}

void ZNFaultViewerEngine::getHeaderSettings(const QDomElement& parent)
{
    const QDomElement e = parent.firstChildElement(kElement);
    if (e.isNull()) return;
    readColour(e, kBackground, m_background);
    readFlag(e, kAutoGoto, m_autoGoto);
    readFlag(e, kPickedPointKey, m_showPicked);
    readColour(e, kBackgroundPicking, m_backgroundPicking);
    changed();
}

QColor ZNFaultViewerEngine::backgroundColour() const
{
    return getMouseModeName() == faultPickingModeName() || getMouseModeName() == eraseModeName()
               ? m_backgroundPicking
               : m_background;
}

void ZNFaultViewerEngine::setPickedPointShown(bool shown)
{
    m_showPicked = shown;
    send(QStringLiteral("UPDATE_VIEWER_OBJECT"));
    changed();
}

void ZNFaultViewerEngine::setScaleShown(bool shown)
{
    m_showScale = shown;
    send(QStringLiteral("UPDATE_VIEWER_OBJECT"));
    changed();
}

void ZNFaultViewerEngine::setColorScaleShown(bool shown)
{
    m_showColorScale = shown;
    send(QStringLiteral("UPDATE_PALETTE_MANAGER"));
    changed();
}

// ----- property sheet -----

void ZNFaultViewerEngine::createProperty(ZNPropertySheet& sheet) const
{
    withIcon(sheet.addProperty(kViewerGroup, kPickedPoint, kPickedPoint, ZNProperty::Bool, m_showPicked),
             QStringLiteral("faultviewershowpoint"));
    withIcon(sheet.addProperty(kViewerGroup, kFreeze, kFreeze, ZNProperty::Bool, m_frozen),
             QStringLiteral("freezesmall"));
    ZNProperty& type = sheet.addProperty(kViewerGroup, kScaleType, kScaleType, ZNProperty::Enum,
                                         static_cast<int>(m_scaleType));
    type.setAttribute(ZNProperty::enumNames(), QStringList{QStringLiteral("Fault Gridding"),
                                                           QStringLiteral("Survey Grid"), QStringLiteral("Custom")});
    ZNProperty& scale = sheet.addProperty(kViewerGroup, kSpatialScale, kSpatialScale, ZNProperty::Double,
                                          m_spatialScale);
    scale.setAttribute(ZNProperty::minimum(), kMinSpatialScale);
    scale.setAttribute(ZNProperty::maximum(), kMaxSpatialScale);
    scale.setAttribute(ZNProperty::singleStep(), kScaleStep);
    scale.setAttribute(QStringLiteral("decimals"), kScaleDecimals);
    scale.enabled = m_scaleType == ScaleType::Custom;
    withIcon(sheet.addProperty(kViewerGroup, kShowScale, kShowScale, ZNProperty::Bool, m_showScale),
             QStringLiteral("imagescale"));
    withIcon(sheet.addProperty(kViewerGroup, kColorScale, kColorScale, ZNProperty::Bool, m_showColorScale),
             QStringLiteral("colorscaleok"));
    const ZN3DFaultPatch* fault = m_fault.data();
    ZNProperty& domain = sheet.addProperty(kViewerGroup, kZDomain, kZDomain, ZNProperty::String,
                                           !fault ? QString()
                                           : fault->GetUnitObject().isTime() ? QStringLiteral("Time")
                                                                             : QStringLiteral("Depth"));
    domain.readOnly = true;
    withIcon(domain, QStringLiteral("zdomain16"));
    sheet.addProperty(kViewerGroup, kPickingBackground, kPickingBackground, ZNProperty::Color, m_backgroundPicking);

    sheet.addProperty(kMappingGroup, kSmoothing, kSmoothing, ZNProperty::Bool, m_mapping.smoothing);
    sheet.addProperty(kMappingGroup, kWindowSize, kWindowSize, ZNProperty::Int, m_mapping.windowSize)
        .setRange(0, Mapping::kMaxWindowSize, 1);
    for (const auto& row : {std::make_pair(kSpatialDev, m_mapping.spatialDeviation),
                            std::make_pair(kVerticalDev, m_mapping.verticalDeviation)}) {
        ZNProperty& dev = sheet.addProperty(kMappingGroup, row.first, row.first, ZNProperty::Double, row.second);
        dev.setAttribute(ZNProperty::minimum(), 0.0);
        dev.setAttribute(ZNProperty::maximum(), Mapping::kMaxDeviation);
        dev.setAttribute(ZNProperty::singleStep(), kDeviationStep);
        dev.enabled = m_mapping.smoothing;
    }
    sheet.addProperty(kMappingGroup, kInterpolation, kInterpolation, ZNProperty::Int, m_mapping.interpolationRadius)
        .setRange(0, Mapping::kMaxInterpolationRadius, 1);
    ZNProperty& corr = sheet.addProperty(kMappingGroup, kCorrThreshold, kCorrThreshold, ZNProperty::Double,
                                         m_mapping.correlationThreshold);
    corr.setAttribute(ZNProperty::minimum(), 0.0);
    corr.setAttribute(ZNProperty::maximum(), 1.0);
    corr.setAttribute(ZNProperty::singleStep(), kThresholdStep);
    ZNProperty& smooth = sheet.addProperty(kMappingGroup, kSmooth, kSmooth, ZNProperty::Enum,
                                           static_cast<int>(m_mapping.combine));
    smooth.setAttribute(ZNProperty::enumNames(),
                        QStringList{QStringLiteral("None"), QStringLiteral("Mean"), QStringLiteral("Max Amplitude")});
}

bool ZNFaultViewerEngine::updateProperty(const QString& id, const QVariant& value)
{
    int i = 0;
    double d = 0.0;
    Mapping mapping = m_mapping;
    if (id == kPickedPoint || id == kFreeze || id == kShowScale || id == kColorScale || id == kSmoothing) {
        if (!value.canConvert<bool>()) return false;
        const bool on = value.toBool();
        bool* const target = id == kPickedPoint ? &m_showPicked
                             : id == kFreeze    ? &m_frozen
                             : id == kShowScale ? &m_showScale
                             : id == kColorScale ? &m_showColorScale
                                                 : &mapping.smoothing;
        if (*target == on) return false;
        if (id == kPickedPoint) setPickedPointShown(on);
        else if (id == kShowScale) setScaleShown(on);
        else if (id == kColorScale) setColorScaleShown(on);
        else *target = on;
    } else if (id == kScaleType) {
        if (!ZNProperty::intValueIn(value, 0, static_cast<int>(ScaleType::Custom), i) || i == int(m_scaleType))
            return false;
        m_scaleType = static_cast<ScaleType>(i);
        refresh();
    } else if (id == kSpatialScale) {
        if (m_scaleType != ScaleType::Custom || !toDouble(value, kMinSpatialScale, kMaxSpatialScale, d) ||
            d == m_spatialScale)
            return false;
        m_spatialScale = d;
        refresh();
    } else if (id == kPickingBackground) {
        const QColor colour = value.value<QColor>();
        if (!value.canConvert<QColor>() || !colour.isValid() || colour == m_backgroundPicking) return false;
        m_backgroundPicking = colour;
        changed();
    } else if (id == kWindowSize || id == kInterpolation) {
        int& target = id == kWindowSize ? mapping.windowSize : mapping.interpolationRadius;
        const int high = id == kWindowSize ? Mapping::kMaxWindowSize : Mapping::kMaxInterpolationRadius;
        if (!ZNProperty::intValueIn(value, 0, high, i) || i == target) return false;
        target = i;
    } else if (id == kSpatialDev || id == kVerticalDev || id == kCorrThreshold) {
        double& target = id == kSpatialDev    ? mapping.spatialDeviation
                         : id == kVerticalDev ? mapping.verticalDeviation
                                              : mapping.correlationThreshold;
        const double high = id == kCorrThreshold ? 1.0 : Mapping::kMaxDeviation;
        if (!toDouble(value, 0.0, high, d) || d == target) return false;
        target = d;
    } else if (id == kSmooth) {
        if (!ZNProperty::intValueIn(value, 0, static_cast<int>(Mapping::Combine::MaxAmplitude), i) ||
            i == static_cast<int>(mapping.combine))
            return false;
        mapping.combine = static_cast<Mapping::Combine>(i);
    } else {
        return false;
    }
    m_mapping = mapping;
    return true;
}
