// Header settings, property sheet and property edits of the 3D fault patch.
#include <gtest/gtest.h>

#include <property/znpropertysheet.h>
#include <testservices.h>
#include <testxml.h>
#include <znxml.h>

#include "surfacefixtures.h"

namespace {

QDomElement settingsOf(QDomDocument& doc, const ZN3DFaultPatch& patch)
{
    QDomElement parent = doc.createElement(QStringLiteral("settings"));
    patch.createHeaderSettings(doc, parent);
    return parent;
}

} // namespace

TEST(FaultPatchSettings, ElementNameAndChildrenFollowThe2DFlag)
{
    const struct {
        bool twoD;
        const char* element;
        QStringList children;
    } cases[] = {
        {false, "ZN3DFaultPatch",
         {"DrawPickedPoint", "ShowPreview", "ShowPickingIntersection", "MeshingMethod", "SmootFactor",
          "InterpSize", "Extrapolation", "Transparency"}},
        {true, "ZN2DFaultPatch",
         {"ShowPickingIntersection", "MeshingMethod", "SmootFactor", "InterpSize", "Extrapolation",
          "Transparency"}},
    };
    for (const auto& c : cases) {
        ZN3DFaultPatch patch;
        patch.set2D(c.twoD);
        QDomDocument doc;
        const QDomElement e = settingsOf(doc, patch).firstChildElement(QLatin1String(c.element));
        ASSERT_FALSE(e.isNull()) << c.element;
        EXPECT_EQ(childTags(e), c.children) << c.element;
    }
}

TEST(FaultPatchSettings, RoundTripKeepsEverySetting)
{
    for (bool twoD : {false, true}) {
        ZN3DFaultPatch written;
        written.set2D(twoD);
        written.setDrawPickedPoint(false);
        written.setShowPreview(true);
        written.setDrawPickingIntersection(false);
        written.setMeshingMethod(0);
        written.setFilterSize(9);
        written.setInterpolationSize(40);
        written.setSpare(15);
        written.setTransparency(0.3f);
        QDomDocument doc;
        const QDomElement parent = settingsOf(doc, written);

        ZN3DFaultPatch read;
        read.set2D(twoD);
        read.getHeaderSettings(parent);
        if (!twoD) {
            EXPECT_FALSE(read.getDrawPickedPoint());
            EXPECT_TRUE(read.getShowPreview());
        }
        EXPECT_FALSE(read.getDrawPickingIntersection()) << twoD;
        EXPECT_EQ(read.getMeshingMethod(), 0) << twoD;
        EXPECT_EQ(read.getFilterSize(), 9) << twoD;
        EXPECT_EQ(read.getInterpolationSize(), 40) << twoD;
        EXPECT_EQ(read.getSpare(), 15) << twoD;
        EXPECT_FLOAT_EQ(read.getTransparency(), 0.3f) << twoD;
        EXPECT_FLOAT_EQ(read.getStoredOpacity(), 0.3f) << twoD;
    }
}

TEST(FaultPatchSettings, A3DElementWithoutChildrenDrawsPicksAndHidesThePreview)
{
    ZN3DFaultPatch patch;
    patch.setDrawPickedPoint(false);
    patch.setShowPreview(true);
    patch.setFilterSize(13);
    QDomDocument doc;
    QDomElement parent = doc.createElement(QStringLiteral("settings"));
    parent.appendChild(doc.createElement(QStringLiteral("ZN3DFaultPatch")));
    patch.getHeaderSettings(parent);
    EXPECT_TRUE(patch.getDrawPickedPoint());
    EXPECT_FALSE(patch.getShowPreview());
    EXPECT_EQ(patch.getFilterSize(), 13);
}

TEST(FaultPatchSheet, GriddingRowsDependOnStyleDimensionAndMethod)
{
    const struct {
        bool baseStyle, twoD, displayFlag;
        int method;
        QStringList rows;
    } cases[] = {
        {false, false, false, 1,
         {"Gridding Method", "Mesh Resolution", "Z Sampling", "Smooth Factor", "Interp Size",
          "Extrapolation", "Show Picking", "ShowPickingIntersection", "ShowPreview", "Transparency"}},
        {true, false, false, 1,
         {"Gridding Method", "Smooth Factor", "Interp Size", "Extrapolation", "Show Picking",
          "ShowPickingIntersection", "ShowPreview", "Transparency"}},
        {false, true, true, 0,
         {"Gridding Method", "Mesh Resolution", "Z Sampling", "Smooth Factor", "Interp Size",
          "Extrapolation", "ShowPickingIntersection", "Transparency"}},
        {false, false, true, 0,
         {"Gridding Method", "Mesh Resolution", "Z Sampling", "Smooth Factor", "Interp Size",
          "Extrapolation", "Show Picking", "ShowPickingIntersection", "ShowPreview", "Transparency"}},
    };
    for (const auto& c : cases) {
        ZN3DFaultPatch patch(c.baseStyle);
        patch.set2D(c.twoD);
        patch.setDisplayFlag(c.displayFlag);
        patch.setMeshingMethod(c.method);
        ZNPropertySheet sheet;
        patch.createGlobalProperty(sheet);
        QStringList ids;
        for (const ZNProperty& p : sheet.group(QStringLiteral("Gridding"))->properties) ids << p.id;
        EXPECT_EQ(ids, c.rows);
        EXPECT_EQ(sheet.property(QStringLiteral("Interp Size"))->enabled, c.method != 0);
        if (const ZNProperty* picking = sheet.property(QStringLiteral("Show Picking"))) {
            EXPECT_EQ(picking->enabled, !c.displayFlag);
            EXPECT_EQ(picking->value.toBool(), !c.displayFlag);
        }
    }
}

TEST(FaultPatchSheet, RangesOfTheIntegerRows)
{
    ZN3DFaultPatch patch;
    ZNPropertySheet sheet;
    patch.createGlobalProperty(sheet);
    const struct {
        const char* id;
        int minimum, maximum, step;
    } cases[] = {{"Mesh Resolution", 50, 500, 10}, {"Z Sampling", 1, 100, 1}, {"Smooth Factor", 1, 101, 1},
                 {"Interp Size", 5, 1000, 1},      {"Extrapolation", 0, 100, 1}, {"Transparency", 0, 100, 10}};
    for (const auto& c : cases) {
        const ZNProperty* row = sheet.property(QLatin1String(c.id));
        ASSERT_NE(row, nullptr) << c.id;
        EXPECT_EQ(row->attribute(ZNProperty::minimum()).toInt(), c.minimum) << c.id;
        EXPECT_EQ(row->attribute(ZNProperty::maximum()).toInt(), c.maximum) << c.id;
        EXPECT_EQ(row->attribute(ZNProperty::singleStep()).toInt(), c.step) << c.id;
    }
}

TEST(FaultPatchSheet, InformationShowsAnglesAreaAndNoValueWithoutMesh)
{
    surfacefixtures::StickGrid g;  // strike 30, dip 60
    ZN3DFaultPatch meshed, empty;
    surfacefixtures::mesh(meshed, g.picks(), ZN3DFaultPatch::MinimumEnvelop);
    meshed.setFaultSetName(QStringLiteral("Set A"));
    const struct {
        ZN3DFaultPatch* patch;
        QStringList values;  // strike, dip direction, dip
    } cases[] = {{&meshed, {"30", "120", "60"}}, {&empty, {"-9999", "-9999", "-9999"}}};
    for (const auto& c : cases) {
        ZNPropertySheet sheet;
        c.patch->createProperty(sheet);
        EXPECT_EQ(sheet.property(QStringLiteral("Fault Strike"))->value.toString(), c.values[0]);
        EXPECT_EQ(sheet.property(QStringLiteral("Dip Direction"))->value.toString(), c.values[1]);
        EXPECT_EQ(sheet.property(QStringLiteral("Dip"))->value.toString(), c.values[2]);
        EXPECT_FALSE(sheet.property(QStringLiteral("Name"))->readOnly);
        EXPECT_TRUE(sheet.property(QStringLiteral("Size"))->readOnly);
    }
    ZNPropertySheet sheet;
    meshed.createProperty(sheet);
    EXPECT_EQ(sheet.property(QStringLiteral("FaultSetName"))->value.toString(), QStringLiteral("Set A"));
    EXPECT_EQ(sheet.property(QStringLiteral("Size"))->value.toString(), QStringLiteral("1.00"));  // 400 x 250 m
    ZNPropertySheet baseSheet;
    ZN3DFaultPatch(true).createProperty(baseSheet);
    EXPECT_EQ(baseSheet.property(QStringLiteral("Dip")), nullptr);
}

TEST(FaultPatchEdits, EachEditStoresItsValuePostsItsActionAndReturnsItsCode)
{
    const QString light = QStringLiteral("UPDATE_FAULT_LIGHT"), mesh = QStringLiteral("UPDATE_FAULT_MESH");
    const struct {
        const char* id;
        QVariant value;
        bool baseStyle;
        int code;
        QString action;  // empty: none
    } cases[] = {
        {"Name", QStringLiteral("F2"), false, 4, light},
        {"Gridding Method", 0, false, 5, mesh},
        {"Gridding Method", 0, true, 5, {}},
        {"Mesh Resolution", 200, false, 5, mesh},
        {"Z Sampling", 10, false, 5, mesh},
        {"Smooth Factor", 3, false, 5, mesh},
        {"Interp Size", 50, false, 5, mesh},
        {"Interp Size", 50, true, 5, {}},
        {"Extrapolation", 20, true, 5, {}},
        {"Show Picking", false, false, 5, light},
        {"ShowPickingIntersection", false, false, 5, light},
        {"ShowPreview", false, false, 5, light},
        {"Transparency", 30, false, 5, light},
        {"Width Edge", 3, false, 5, light},
        {"Edge", QVariant::fromValue(QPen(Qt::red)), false, 5, light},
        {"Mesh Resolution", 100, false, 0, {}},   // the stored value
        {"Mesh Resolution", 20, false, 0, {}},    // below its range
        {"Smooth Factor", QStringLiteral("x"), false, 0, {}},
        {"Unknown", 1, false, 0, {}},
    };
    for (const auto& c : cases) {
        RecordingProcess process;
        ZN3DFaultPatch patch(c.baseStyle);
        const int code = patch.updateProperty(QLatin1String(c.id), c.value, nullptr);
        EXPECT_EQ(code, c.code) << c.id << " " << c.baseStyle;
        EXPECT_EQ(process.actionNames(), c.action.isEmpty() ? QStringList() : QStringList{c.action})
            << c.id << " " << c.baseStyle;
        if (c.code != 0 && process.actions.size() == 1) {
            EXPECT_EQ(process.actions[0].second, &patch);
        }
    }
}

TEST(FaultPatchEdits, StoredValuesAndTheSheetFollowTheEdits)
{
    RecordingProcess process;
    ZN3DFaultPatch patch;
    ZNPropertySheet sheet;
    patch.createGlobalProperty(sheet);
    patch.updateProperty(QStringLiteral("Transparency"), 30, &sheet);
    EXPECT_FLOAT_EQ(patch.getTransparency(), 0.7f);
    EXPECT_FLOAT_EQ(patch.getStoredOpacity(), 0.7f);
    EXPECT_EQ(sheet.property(QStringLiteral("Transparency"))->value.toInt(), 30);
    ZNPropertySheet again;
    patch.createGlobalProperty(again);
    EXPECT_EQ(again.property(QStringLiteral("Transparency"))->value.toInt(), 30);

    patch.updateProperty(QStringLiteral("Gridding Method"), 0, &sheet);
    EXPECT_FALSE(sheet.property(QStringLiteral("Interp Size"))->enabled);
    EXPECT_FALSE(sheet.property(QStringLiteral("Extrapolation"))->enabled);
    patch.updateProperty(QStringLiteral("Gridding Method"), 1, &sheet);
    EXPECT_TRUE(sheet.property(QStringLiteral("Extrapolation"))->enabled);

    const struct {
        const char* id;
        int value;
        int (ZN3DFaultPatchLight::*get)() const;
    } stores[] = {{"Mesh Resolution", 250, &ZN3DFaultPatchLight::getUtmPrecision},
                  {"Z Sampling", 8, &ZN3DFaultPatchLight::getTimePrecision},
                  {"Smooth Factor", 11, &ZN3DFaultPatchLight::getFilterSize},
                  {"Interp Size", 30, &ZN3DFaultPatchLight::getInterpolationSize},
                  {"Extrapolation", 12, &ZN3DFaultPatchLight::getSpare}};
    for (const auto& s : stores) {
        patch.updateProperty(QLatin1String(s.id), s.value, &sheet);
        EXPECT_EQ((patch.*s.get)(), s.value) << s.id;
    }
    patch.updateProperty(QStringLiteral("Width Edge"), 4, nullptr);
    EXPECT_EQ(patch.ZN3DFaultPatchLight::getPen().width(), 4);
}

TEST(FaultPatchEdits, RenameMovesTheFileNameIntoTheSameFolder)
{
    RecordingProcess process;
    ZN3DFaultPatch patch;
    patch.setFileName(QStringLiteral("/data/faults/Old.flt"));
    EXPECT_EQ(patch.updateProperty(QStringLiteral("Name"), QStringLiteral("North"), nullptr), 4);
    EXPECT_EQ(patch.GetFaultName(), QStringLiteral("North"));
    EXPECT_EQ(patch.getName(), QStringLiteral("North"));
    EXPECT_EQ(patch.getFileName(), QStringLiteral("/data/faults/North"));
}
