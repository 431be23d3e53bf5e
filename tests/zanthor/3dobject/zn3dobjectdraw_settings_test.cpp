#include <gtest/gtest.h>

#include <3dobject/zn3dobjectdraw.h>
#include <property/znpropertysheet.h>
#include <testxml.h>
#include <znxml.h>

namespace {

// An object without a fill, as line objects are.
class LineObject : public ZN3DObjectDraw {
public:
    bool hasFill() const override { return false; }
};

QDomElement settingsOf(QDomDocument& doc, const ZN3DObjectDraw& o)
{
    QDomElement parent = doc.createElement(QStringLiteral("settings"));
    doc.appendChild(parent);
    o.createHeaderSettings(doc, parent);
    return parent;
}

} // namespace

TEST(ObjectDrawSettings, WriteBothElementsWithTheirKeysInOrder)
{
    ZN3DObjectDraw object;
    QDomDocument doc;
    const QDomElement parent = settingsOf(doc, object);
    EXPECT_EQ(childTags(parent), (QStringList{"ZN3DObjectDraw", "Object3DDrawInternal"}));
    EXPECT_EQ(childTags(parent.firstChildElement("ZN3DObjectDraw")),
              (QStringList{"objectWidthPen", "objectStylePen", "objectStyleBrush"}));
    EXPECT_EQ(childTags(parent.firstChildElement("Object3DDrawInternal")),
              (QStringList{"WidgetName", "FileName", "IsHidden", "Edge_style", "Fill_style",
                           "Transparency", "UniqueObjectId"}));

    LineObject line;
    QDomDocument lineDoc;
    EXPECT_EQ(childTags(settingsOf(lineDoc, line).firstChildElement("ZN3DObjectDraw")),
              (QStringList{"objectWidthPen", "objectStylePen"}));
}

TEST(ObjectDrawSettings, RoundTripRestoresTheDisplayButNotTheNames)
{
    ZN3DObjectDraw source;
    source.setPen(QPen(QColor(9, 8, 7), 4, Qt::DotLine));
    source.setBrush(QBrush(QColor(1, 2, 3), Qt::CrossPattern));
    source.setTransparency(0.25f);
    source.setHidden(true);
    source.setUniqueObjectId(314);
    source.setWidgetName(QStringLiteral("viewer 2"));
    source.setFileName(QStringLiteral("/data/a.zn3d"));
    QDomDocument doc;
    const QDomElement parent = settingsOf(doc, source);

    ZN3DObjectDraw read;
    read.getHeaderSettings(parent);
    EXPECT_EQ(read.getPen(), source.getPen());
    EXPECT_EQ(read.getBrush(), source.getBrush());
    EXPECT_EQ(read.getTransparency(), 0.25f);
    EXPECT_TRUE(read.isHidden());
    EXPECT_EQ(read.getUniqueObjectId(), 314);
    EXPECT_TRUE(read.getWidgetName().isEmpty());  // written, never read back
    EXPECT_TRUE(read.getFileName().isEmpty());
}

TEST(ObjectDrawSettings, AbsentWidthAndStylesReadAsOneAndAreAppliedTogether)
{
    QDomDocument doc;
    const QDomElement settings = parseXml(doc, QStringLiteral("<s><ZN3DObjectDraw/></s>"));
    ZN3DObjectDraw object;
    object.setPen(QPen(Qt::red, 5, Qt::DashLine));
    object.setBrush(QBrush(Qt::red, Qt::Dense2Pattern));
    object.getHeaderSettings(settings);
    EXPECT_EQ(object.getPen().width(), 1);
    EXPECT_EQ(object.getPen().style(), Qt::SolidLine);
    EXPECT_EQ(object.getBrush().style(), Qt::SolidPattern);
    EXPECT_EQ(object.getPen().color(), QColor(Qt::red));

    LineObject line;
    line.setBrush(QBrush(Qt::red, Qt::Dense2Pattern));
    line.getHeaderSettings(settings);
    EXPECT_EQ(line.getBrush().style(), Qt::Dense2Pattern);  // no fill: brush untouched
}

TEST(ObjectDrawSettings, MissingOrDamagedSettingsChangeNothingElse)
{
    ZN3DObjectDraw object;
    object.setTransparency(0.5f);
    object.setUniqueObjectId(3);
    const QPen pen = object.getPen();
    QDomDocument empty, bad;
    object.getHeaderSettings(parseXml(empty, QStringLiteral("<s/>")));
    EXPECT_EQ(object.getPen(), pen);
    object.getHeaderSettings(parseXml(bad, QStringLiteral(
        "<s><Object3DDrawInternal><Transparency value=\"7\"/><UniqueObjectId value=\"99999999999\"/>"
        "<IsHidden value=\"yes\"/></Object3DDrawInternal></s>")));
    EXPECT_EQ(object.getTransparency(), 0.5f);
    EXPECT_EQ(object.getUniqueObjectId(), 3);
    EXPECT_FALSE(object.isHidden());
}

TEST(ObjectDrawProperties, EdgeAndFillRowsCarryTheirEditorsRangesNamesAndIcons)
{
    ZN3DObjectDraw object;
    object.setPen(QPen(Qt::black, 3, Qt::DashDotLine));
    object.setBrush(QBrush(Qt::black, Qt::Dense5Pattern));
    ZNPropertySheet sheet;
    object.createProperty(sheet);
    ASSERT_EQ(sheet.groups().size(), 2);
    EXPECT_EQ(sheet.groups()[0].name, QStringLiteral("Edge"));
    EXPECT_EQ(sheet.groups()[1].name, QStringLiteral("Fill"));

    // Style rows offer the styles by number, 0 to choices - 1, each with its icon.
    const struct { const char* id; ZNProperty::Kind kind; const char* editor; int value, choices; } rows[] = {
        {"Style Edge", ZNProperty::Enum, "StyleSettings", int(Qt::DashDotLine), 6},
        {"Width Edge", ZNProperty::Int, "WidthSettings", 3, 0},
        {"Style Fill", ZNProperty::Enum, "StyleSettingsFill", int(Qt::Dense5Pattern), 15},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.id);
        const ZNProperty* p = sheet.property(QLatin1String(row.id));
        ASSERT_NE(p, nullptr);
        EXPECT_EQ(p->kind, row.kind);
        EXPECT_EQ(p->editor, QLatin1String(row.editor));
        EXPECT_EQ(p->value.toInt(), row.value);
        QStringList numbers;
        for (int k = 0; k < row.choices; ++k) numbers << QString::number(k);
        EXPECT_EQ(p->attribute(ZNProperty::enumNames()).toStringList(), numbers);
        EXPECT_EQ(p->attribute(ZNProperty::enumIcons()).toList().size(), row.choices);
    }
    const ZNProperty* width = sheet.property("Width Edge");
    EXPECT_EQ(width->attribute(ZNProperty::minimum()).toInt(), 1);
    EXPECT_EQ(width->attribute(ZNProperty::maximum()).toInt(), 10);
    EXPECT_EQ(width->attribute(ZNProperty::singleStep()).toInt(), 1);
}

TEST(ObjectDrawProperties, UpdatesApplyOnlyChangedValuesInsideTheirRanges)
{
    ZN3DObjectDraw object;
    object.setPen(QPen(Qt::black, 2, Qt::SolidLine));
    object.setBrush(QBrush(Qt::black, Qt::SolidPattern));
    const struct { const char* id; QVariant value; bool changed; } cases[] = {
        {"Style Edge", 3, true},   {"Style Edge", 3, false},  {"Style Edge", 6, false},
        {"Width Edge", 10, true},  {"Width Edge", 0, false},  {"Width Edge", 11, false},
        {"Width Edge", "x", false}, {"Style Fill", 14, true}, {"Style Fill", 15, false},
        {"Unknown", 1, false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(object.updateProperty(QString::fromLatin1(c.id), c.value), c.changed)
            << c.id << " " << c.value.toString().toStdString();
    }
    EXPECT_EQ(object.getPen().style(), Qt::DotLine);
    EXPECT_EQ(object.getPen().width(), 10);
    EXPECT_EQ(object.getBrush().style(), Qt::DiagCrossPattern);
}
