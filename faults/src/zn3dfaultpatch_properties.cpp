// The property sheet of the 3D fault patch and the edits made in it.
#include "zn3dfaultpatch.h"

#include <cmath>

#include <QDir>
#include <QFileInfo>
#include <QStringList>

#include <property/znpropertysheet.h>
#include <znprocess.h>

namespace {
const QString kInformation = QStringLiteral("Information");
const QString kGridding = QStringLiteral("Gridding");
const QString kName = QStringLiteral("Name");
const QString kEdge = QStringLiteral("Edge");
const QString kMethod = QStringLiteral("Gridding Method");
const QString kTransparency = QStringLiteral("Transparency");
const QString kUpdateLight = QStringLiteral("UPDATE_FAULT_LIGHT");
const QString kUpdateMesh = QStringLiteral("UPDATE_FAULT_MESH");
// Rows of the drawable base, whose edits change the fault's pen.
const QStringList kDrawableRows = {QStringLiteral("Style Edge"), QStringLiteral("Width Edge"),
                                   QStringLiteral("Style Fill")};

constexpr int kAngleDecimals = 0;
constexpr int kSizeDecimals = 2;
constexpr int kLastMethod = ZN3DFaultPatch::MinimumEnvelop;
constexpr int kPercent = 100;
constexpr int kTransparencyStep = 10;

enum class Action { Light, Mesh, MeshUnlessBaseStyle };

// The integer gridding rows, in sheet order.
struct IntRow {
    const char* id;
    int minimum, maximum, step;
    int (ZN3DFaultPatchLight::*get)() const;
    void (ZN3DFaultPatchLight::*set)(int);
    bool fullStyleOnly;  // not made with the base-style flag
    bool needsMethod;    // disabled while the gridding method is 0
    Action action;
};
using Light = ZN3DFaultPatchLight;
const IntRow kIntRows[] = {
    {"Mesh Resolution", Light::kMinUtmPrecision, Light::kMaxUtmPrecision, 10,
     &Light::getUtmPrecision, &Light::setUtmPrecision, true, false, Action::Mesh},
    {"Z Sampling", Light::kMinTimePrecision, Light::kMaxTimePrecision, 1,
     &Light::getTimePrecision, &Light::setTimePrecision, true, false, Action::Mesh},
    {"Smooth Factor", Light::kMinFilterSize, Light::kMaxFilterSize, 1,
     &Light::getFilterSize, &Light::setFilterSize, false, false, Action::Mesh},
    {"Interp Size", Light::kMinInterpolationSize, Light::kMaxInterpolationSize, 1,
     &Light::getInterpolationSize, &Light::setInterpolationSize, false, true,
     Action::MeshUnlessBaseStyle},
    {"Extrapolation", Light::kMinSpare, Light::kMaxSpare, 1,
     &Light::getSpare, &Light::setSpare, false, true, Action::MeshUnlessBaseStyle},
};

// The display switches, in sheet order.
struct BoolRow {
    const char* id;
    const char* label;
    bool (ZN3DFaultPatchLight::*get)() const;
    void (ZN3DFaultPatchLight::*set)(bool);
    bool threeDOnly;
};
const BoolRow kBoolRows[] = {
    {"Show Picking", "Show Picking", &ZN3DFaultPatchLight::getDrawPickedPoint,
     &ZN3DFaultPatchLight::setDrawPickedPoint, true},
    {"ShowPickingIntersection", "Show Picking Intersection",
     &ZN3DFaultPatchLight::getDrawPickingIntersection,
     &ZN3DFaultPatchLight::setDrawPickingIntersection, false},
    {"ShowPreview", "Show Preview", &ZN3DFaultPatchLight::getShowPreview,
     &ZN3DFaultPatchLight::setShowPreview, true},
};
const QString kShowPicking = QString::fromLatin1(kBoolRows[0].id);

int transparencyPercent(float opacity) { return static_cast<int>(std::lround((1.0 - opacity) * kPercent)); }

QString fixed(double value, int decimals) { return QString::number(value, 'f', decimals); }


} // namespace

void ZN3DFaultPatch::createProperty(ZNPropertySheet& sheet) const
{
    if (!m_baseStyle) {
        const core::vec3 normal = getNormal();
        const struct {
            const char* id;
            const char* label;
            QString value;
        } rows[] = {
            {"FaultSetName", "Fault set name", m_faultSetName},
            {"Name", "Name", GetFaultName()},
            {"Fault Strike", "Fault Strike", fixed(getFaultPlaneAzimuthAngle(normal), kAngleDecimals)},
            {"Dip Direction", "Dip Direction", fixed(getAzimuthAngle(normal), kAngleDecimals)},
            {"Dip", "Dip", fixed(getDipAngle(normal), kAngleDecimals)},
            {"Size", "Size", fixed(m_computedArea, kSizeDecimals)},
        };
        for (const auto& row : rows)
            sheet.addProperty(kInformation, QString::fromLatin1(row.id), QString::fromLatin1(row.label),
                              ZNProperty::String, row.value)
                .readOnly = QString::fromLatin1(row.id) != kName;
        sheet.addProperty(kInformation, QStringLiteral("Saved"), QStringLiteral("Saved"),
                          ZNProperty::Bool, isSaved())
            .readOnly = true;
    }
    ZN3DObjectDraw::createProperty(sheet);
}

void ZN3DFaultPatch::createGlobalProperty(ZNPropertySheet& sheet) const
{
    ZNProperty& method = sheet.addProperty(kGridding, kMethod, kMethod, ZNProperty::Enum, getMeshingMethod());
    method.setAttribute(ZNProperty::enumNames(),
                        QStringList{QStringLiteral("Convex Envelop"), QStringLiteral("Minimum Envelop")});
    for (const IntRow& r : kIntRows) {
        if (r.fullStyleOnly && m_baseStyle) continue;
        const QString id = QString::fromLatin1(r.id);
        ZNProperty& row = sheet.addProperty(kGridding, id, id, ZNProperty::Int, (this->*r.get)());
        row.setRange(r.minimum, r.maximum, r.step);
        row.enabled = !r.needsMethod || getMeshingMethod() != ConvexEnvelop;
    }
    for (const BoolRow& r : kBoolRows) {
        if (r.threeDOnly && m_is2D) continue;
        const QString id = QString::fromLatin1(r.id);
        const bool locked = id == kShowPicking && m_displayFlag;
        ZNProperty& row = sheet.addProperty(kGridding, id, QString::fromLatin1(r.label), ZNProperty::Bool,
                                            locked ? false : (this->*r.get)());
        row.enabled = !locked;
    }
    ZNProperty& transparency = sheet.addProperty(kGridding, kTransparency, kTransparency, ZNProperty::Int,
                                                 transparencyPercent(getStoredOpacity()));
    transparency.setRange(0, kPercent, kTransparencyStep);
}

bool ZN3DFaultPatch::updateProperty(const QString& id, const QVariant& value)
{
    return updateProperty(id, value, nullptr) != PropertyUnchanged;
}

int ZN3DFaultPatch::updateProperty(const QString& id, const QVariant& value, ZNPropertySheet* sheet)
{
    int result = PropertyUnchanged;
    Action action = Action::Light;
    int v = 0;
    if (id == kName) {
        const QString name = value.toString();
        if (value.canConvert<QString>() && name != GetFaultName()) {
            SetFaultName(name);
            setFileName(QFileInfo(getFileName()).path() + QDir::separator() + name);
            result = PropertyRenamed;
        }
    } else if (kDrawableRows.contains(id)) {
        if (ZN3DObjectDraw::updateProperty(id, value)) {
            ZN3DFaultPatchLight::setPen(ZN3DObjectDraw::getPen());
            result = PropertyStored;
        }
    } else if (id == kEdge) {
        if (value.canConvert<QPen>() && value.value<QPen>() != getPen()) {
            setPen(value.value<QPen>());
            result = PropertyStored;
        }
    } else if (id == kMethod) {
        if (ZNProperty::intValueIn(value, ConvexEnvelop, kLastMethod, v) &&
            v != getMeshingMethod()) {
            setMeshingMethod(v);
            for (const IntRow& r : kIntRows)
                if (sheet && r.needsMethod)
                    if (ZNProperty* row = sheet->property(QString::fromLatin1(r.id)))
                        row->enabled = v != ConvexEnvelop;
            action = Action::MeshUnlessBaseStyle;
            result = PropertyStored;
        }
    } else if (id == kTransparency) {
        if (ZNProperty::intValueIn(value, 0, kPercent, v) &&
            v != transparencyPercent(getStoredOpacity())) {
            setTransparency(1.0f - static_cast<float>(v) / kPercent);
            result = PropertyStored;
        }
    } else {
        for (const IntRow& r : kIntRows)
            if (id == QLatin1String(r.id) && ZNProperty::intValueIn(value, r.minimum, r.maximum, v) &&
                v != (this->*r.get)()) {
                (this->*r.set)(v);
                action = r.action;
                result = PropertyStored;
            }
        for (const BoolRow& r : kBoolRows)
            if (id == QLatin1String(r.id) && value.canConvert<bool>() && value.toBool() != (this->*r.get)()) {
                (this->*r.set)(value.toBool());
                result = PropertyStored;
            }
    }
    if (result != PropertyUnchanged) {
        if (sheet) sheet->setValue(id, value);
        const bool postMesh = action == Action::Mesh ||
                              (action == Action::MeshUnlessBaseStyle && !m_baseStyle);
        if (action == Action::Light)
            ZNProcess::sendActionToMdi(kUpdateLight, this);
        else if (postMesh)
            ZNProcess::sendActionToMdi(kUpdateMesh, this);
    }
    if (m_baseStyle && !kDrawableRows.contains(id)) ZN3DObjectDraw::updateProperty(id, value);
    return result;
}
