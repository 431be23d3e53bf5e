#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include <testxml.h>
#include <znxml.h>

namespace {

// A parent element inside its own document.
struct Doc {
    QDomDocument doc;
    QDomElement root;
    QDomDocument copy;
    Doc()
    {
        root = doc.createElement(QStringLiteral("root"));
        doc.appendChild(root);
    }
    // The document re-parsed from its text, as a reader would see it.
    QDomElement reparsed()
    {
        copy.setContent(doc.toByteArray());
        return copy.documentElement();
    }
};

const QString kPen = QStringLiteral("pen");
const QString kBrush = QStringLiteral("brush");

} // namespace

// The key-value helpers serve DOM documents and flat trees with one code: every case runs
// on both.
template <class Kinds>
class KeyValues : public testing::Test {};
struct DomKinds {
    using Document = QDomDocument;
    using Element = QDomElement;
};
struct TreeKinds {
    using Document = ZNXmlTree;
    using Element = ZNXmlElement;
};
using DocumentKinds = testing::Types<DomKinds, TreeKinds>;
TYPED_TEST_SUITE(KeyValues, DocumentKinds);

TYPED_TEST(KeyValues, RoundTrip)
{
    typename TypeParam::Document doc;
    typename TypeParam::Element root = doc.createElement("header");
    ZNXml::appendInt(doc, root, "numberOfPatch", -42);
    ZNXml::appendDouble(doc, root, "scale", 0.1);
    ZNXml::appendBool(doc, root, "picked", true);
    ZNXml::appendString(doc, root, "name", "F<1> & \"2\"");
    ZNXml::appendMatrix(doc, root, "matrix", core::mat4());
    EXPECT_EQ(root.firstChildElement("picked").attribute("value"), "1");
    EXPECT_EQ(root.firstChildElement("scale").attribute("value"), "0.1") << "shortest exact text";
    EXPECT_EQ(ZNXml::readInt(root, "numberOfPatch", 0), -42);
    EXPECT_EQ(ZNXml::readDouble(root, "scale", 0), 0.1) << "reals keep every bit";
    EXPECT_TRUE(ZNXml::readBool(root, "picked", false));
    EXPECT_EQ(ZNXml::readString(root, "name"), "F<1> & \"2\"");
    bool found = false;
    ZNXml::readMatrix(root, "matrix", core::mat4(), &found);
    EXPECT_TRUE(found);
}

TYPED_TEST(KeyValues, MissingOrUnparsableValuesGiveTheFallback)
{
    typename TypeParam::Document doc;
    typename TypeParam::Element root = doc.createElement("header");
    ZNXml::appendString(doc, root, "dimx", "12a");
    ZNXml::appendString(doc, root, "withMesh", "yes");
    ZNXml::appendString(doc, root, "range", "300");
    ZNXml::appendString(doc, root, "matrix", "1 2 3");
    root.appendChild(doc.createElement("noValue"));
    bool found = true;
    EXPECT_EQ(ZNXml::readInt(root, "dimx", 7, &found), 7);
    EXPECT_FALSE(found);
    EXPECT_TRUE(ZNXml::readBool(root, "withMesh", true, &found));
    EXPECT_FALSE(found);
    EXPECT_EQ(ZNXml::readString(root, "noValue", "d", &found), "d");
    EXPECT_FALSE(found);
    EXPECT_EQ(ZNXml::readIntInRange(root, "range", 5, 0, 255, &found), 5);
    EXPECT_FALSE(found);
    ZNXml::readMatrix(root, "matrix", core::mat4(), &found);
    EXPECT_FALSE(found);
    EXPECT_EQ(ZNXml::readDouble(root, "absent", 2.5), 2.5);
}

TEST(Xml, FormatDoubleIsExactForAwkwardValues)
{
    for (double v : {1.0 / 3.0, 6073000.123456789, -9999.0, 1e-300,
                     std::numeric_limits<double>::max()})
        EXPECT_EQ(ZNXml::formatDouble(v).toDouble(), v);
}

TEST(XmlPen, RoundTripsColourStyleWidthCapAndJoin)
{
    QPen dashed(QColor(10, 20, 30, 40), 2.5, Qt::DashDotDotLine, Qt::RoundCap, Qt::BevelJoin);
    QPen invalidColour(QColor(256, 0, 0), 3);  // an out-of-range channel gives an invalid colour
    QPen none(Qt::NoPen);
    for (const QPen& pen : {dashed, invalidColour, none, QPen()}) {
        Doc d;
        ZNXml::appendPen(d.doc, d.root, kPen, pen);
        bool found = false;
        const QPen back = ZNXml::readPen(d.reparsed(), kPen, QPen(Qt::yellow), &found);
        EXPECT_TRUE(found);
        EXPECT_EQ(back.color().isValid(), pen.color().isValid());
        if (pen.color().isValid()) {
            EXPECT_EQ(back.color().rgba(), pen.color().rgba());
        }
        EXPECT_EQ(back.style(), pen.style());
        EXPECT_EQ(back.widthF(), pen.widthF());
        EXPECT_EQ(back.capStyle(), pen.capStyle());
        EXPECT_EQ(back.joinStyle(), pen.joinStyle());
    }
}

TEST(XmlPen, WritesTheFiveChildrenInOrder)
{
    Doc d;
    const QDomElement e = ZNXml::appendPen(d.doc, d.root, kPen, QPen(Qt::red, 2));
    EXPECT_EQ(childTags(e), (QStringList{"color", "style", "width", "capStyle", "joinStyle"}));
    EXPECT_EQ(e.firstChildElement("color").attribute("value"), QStringLiteral("#ffff0000"));
    EXPECT_EQ(e.firstChildElement("width").attribute("value"), QStringLiteral("2"));
}

TEST(XmlPen, DamagedChildrenKeepTheFallbackAttribute)
{
    const QPen fallback(QColor(1, 2, 3), 4, Qt::DotLine, Qt::SquareCap, Qt::RoundJoin);
    QDomDocument holder;
    const QDomElement root = parseXml(holder,
        "<r><pen><color value=\"not a colour\"/><style value=\"99\"/><width value=\"-1\"/>"
        "<capStyle value=\"7\"/><joinStyle value=\"x\"/></pen></r>");
    const QPen back = ZNXml::readPen(root, kPen, fallback);
    EXPECT_EQ(back, fallback);

    QDomDocument partial;
    const QPen styled = ZNXml::readPen(parseXml(partial, "<r><pen><style value=\"2\"/></pen></r>"),
                                       kPen, fallback);
    EXPECT_EQ(styled.style(), Qt::DashLine);
    EXPECT_EQ(styled.color(), fallback.color());

    bool found = true;
    EXPECT_EQ(ZNXml::readPen(root, QStringLiteral("other"), fallback, &found), fallback);
    EXPECT_FALSE(found);
}

TEST(XmlBrush, RoundTripsEveryPlainStyle)
{
    for (int style = Qt::NoBrush; style <= Qt::DiagCrossPattern; ++style) {
        SCOPED_TRACE(style);
        Doc d;
        const QBrush brush(QColor(200, 100, 50, 25), static_cast<Qt::BrushStyle>(style));
        ZNXml::appendBrush(d.doc, d.root, kBrush, brush);
        const QBrush back = ZNXml::readBrush(d.reparsed(), kBrush, QBrush());
        EXPECT_EQ(back.style(), brush.style());
        EXPECT_EQ(back.color().rgba(), brush.color().rgba());
    }
}

TEST(XmlBrush, StyleOutsideThePlainPatternsKeepsTheFallback)
{
    QDomDocument holder;
    const QDomElement root =
        parseXml(holder, "<r><brush><color value=\"#80102030\"/><style value=\"15\"/></brush></r>");
    const QBrush back = ZNXml::readBrush(root, kBrush, QBrush(Qt::red, Qt::Dense3Pattern));
    EXPECT_EQ(back.style(), Qt::Dense3Pattern);
    EXPECT_EQ(back.color(), QColor(0x10, 0x20, 0x30, 0x80));
}

TEST(XmlMatrix, RoundTripsExactly)
{
    core::mat4 m;
    for (int i = 0; i < 16; ++i) m.m[i] = std::pow(-1.0, i) * (i + 1) / 3.0 * 1e-7;
    m.m[5] = std::numeric_limits<double>::max();
    Doc d;
    ZNXml::appendMatrix(d.doc, d.root, QStringLiteral("fromBlocToWorldMatrix"), m);
    bool found = false;
    EXPECT_EQ(ZNXml::readMatrix(d.reparsed(), QStringLiteral("fromBlocToWorldMatrix"),
                                core::mat4(), &found),
              m);
    EXPECT_TRUE(found);
}

TEST(XmlRealLists, WrongCountsOrTextGiveTheFallback)
{
    const core::mat4 identity;
    const core::vec3 one(1, 1, 1);
    const char* bad[] = {"", "1 2", "1 2 3 4", "1 x 3", "a b c"};
    for (const char* text : bad) {
        SCOPED_TRACE(text);
        QDomDocument holder;
        const QDomElement root = parseXml(holder, QStringLiteral("<r><m value=\"%1\"/><p value=\"%1\"/></r>")
                                                   .arg(QLatin1String(text)));
        bool found = true;
        EXPECT_EQ(ZNXml::readMatrix(root, QStringLiteral("m"), identity, &found), identity);
        EXPECT_FALSE(found);
        EXPECT_EQ(ZNXml::readPixelSize(root, QStringLiteral("p"), one, &found), one);
        EXPECT_FALSE(found);
    }
}

TEST(XmlPixelSize, RoundTripsThreeScaleFactors)
{
    Doc d;
    const core::vec3 size(0.1, 25.0, 1e300);
    ZNXml::appendPixelSize(d.doc, d.root, QStringLiteral("pixelSize"), size);
    EXPECT_EQ(ZNXml::readPixelSize(d.reparsed(), QStringLiteral("pixelSize"), core::vec3()), size);
}
