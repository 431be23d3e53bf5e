#include <gtest/gtest.h>

#include <cmath>
#include <limits>

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

QDomElement parse(QDomDocument& holder, const QString& xml)
{
    EXPECT_TRUE(holder.setContent(xml));
    return holder.documentElement();
}

const QString kPen = QStringLiteral("pen");
const QString kBrush = QStringLiteral("brush");

} // namespace

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
    QStringList tags;
    for (QDomElement c = e.firstChildElement(); !c.isNull(); c = c.nextSiblingElement())
        tags << c.tagName();
    EXPECT_EQ(tags, (QStringList{"color", "style", "width", "capStyle", "joinStyle"}));
    EXPECT_EQ(e.firstChildElement("color").attribute("value"), QStringLiteral("#ffff0000"));
    EXPECT_EQ(e.firstChildElement("width").attribute("value"), QStringLiteral("2"));
}

TEST(XmlPen, DamagedChildrenKeepTheFallbackAttribute)
{
    const QPen fallback(QColor(1, 2, 3), 4, Qt::DotLine, Qt::SquareCap, Qt::RoundJoin);
    QDomDocument holder;
    const QDomElement root = parse(holder,
        "<r><pen><color value=\"not a colour\"/><style value=\"99\"/><width value=\"-1\"/>"
        "<capStyle value=\"7\"/><joinStyle value=\"x\"/></pen></r>");
    const QPen back = ZNXml::readPen(root, kPen, fallback);
    EXPECT_EQ(back, fallback);

    QDomDocument partial;
    const QPen styled = ZNXml::readPen(parse(partial, "<r><pen><style value=\"2\"/></pen></r>"),
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
        parse(holder, "<r><brush><color value=\"#80102030\"/><style value=\"15\"/></brush></r>");
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
        const QDomElement root = parse(holder, QStringLiteral("<r><m value=\"%1\"/><p value=\"%1\"/></r>")
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
