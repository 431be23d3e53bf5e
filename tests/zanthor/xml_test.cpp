#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include <znxml.h>

TEST(Xml, KeyValueElementsRoundTrip)
{
    QDomDocument doc;
    QDomElement root = doc.createElement("header");
    ZNXml::appendInt(doc, root, "numberOfPatch", -42);
    ZNXml::appendDouble(doc, root, "scale", 0.1);
    ZNXml::appendBool(doc, root, "picked", true);
    ZNXml::appendString(doc, root, "name", "F<1> & \"2\"");
    EXPECT_EQ(root.firstChildElement("picked").attribute("value"), "1");
    EXPECT_EQ(ZNXml::readInt(root, "numberOfPatch", 0), -42);
    EXPECT_EQ(ZNXml::readDouble(root, "scale", 0), 0.1) << "reals keep every bit";
    EXPECT_TRUE(ZNXml::readBool(root, "picked", false));
    EXPECT_EQ(ZNXml::readString(root, "name"), "F<1> & \"2\"");
}

TEST(Xml, MissingOrUnparsableValuesGiveTheFallback)
{
    QDomDocument doc;
    QDomElement root = doc.createElement("header");
    ZNXml::appendString(doc, root, "dimx", "12a");
    ZNXml::appendString(doc, root, "withMesh", "yes");
    root.appendChild(doc.createElement("noValue"));
    bool found = true;
    EXPECT_EQ(ZNXml::readInt(root, "dimx", 7, &found), 7);
    EXPECT_FALSE(found);
    EXPECT_TRUE(ZNXml::readBool(root, "withMesh", true, &found));
    EXPECT_FALSE(found);
    EXPECT_EQ(ZNXml::readString(root, "noValue", "d", &found), "d");
    EXPECT_FALSE(found);
    EXPECT_EQ(ZNXml::readDouble(root, "absent", 2.5), 2.5);
}

TEST(Xml, FormatDoubleIsExactForAwkwardValues)
{
    for (double v : {1.0 / 3.0, 6073000.123456789, -9999.0, 1e-300,
                     std::numeric_limits<double>::max()})
        EXPECT_EQ(ZNXml::formatDouble(v).toDouble(), v);
}
