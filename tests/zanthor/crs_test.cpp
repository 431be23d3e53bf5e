#include <gtest/gtest.h>

#include <georef/crs.h>
#include <georef/unitobject.h>

using georef::Crs;
using georef::UnitObject;

TEST(Crs, ValidMeansNotEmptyAndProjected)
{
    struct Case {
        const char* what;
        Crs crs;
        bool empty, projected, valid;
    };
    const Case cases[] = {
        {"UTM 31N", Crs::fromEpsg(32631), false, true, true},
        {"WGS 84 geographic", Crs::fromEpsg(4326), false, false, false},
        {"empty", Crs(), true, false, false},
        {"unknown code", Crs::fromEpsg(999999), true, false, false},
        {"garbage WKT", Crs::fromWkt("PROJCS[nonsense"), true, false, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(c.crs.isEmpty(), c.empty);
        EXPECT_EQ(c.crs.isProjected(), c.projected);
        EXPECT_EQ(c.crs.isValid(), c.valid);
    }
    EXPECT_TRUE(Crs::fromEpsg(4326).isGeographic());
}

TEST(Crs, WktRoundTripKeepsTheSystem)
{
    const Crs utm = Crs::fromEpsg(32631);
    EXPECT_EQ(utm.epsgCode(), 32631);
    const Crs back = Crs::fromWkt(utm.toWkt());
    EXPECT_TRUE(back.isValid());
    EXPECT_EQ(back, utm);
    EXPECT_NE(back, Crs::fromEpsg(32632));
    EXPECT_EQ(Crs(), Crs());
    EXPECT_NE(Crs(), utm);
}

TEST(Crs, ZNCrsElementRoundTripsAndAnEmptyOneReadsEmpty)
{
    QDomDocument doc;
    const QDomElement e = Crs::fromEpsg(2154).createElement(doc);
    EXPECT_EQ(e.tagName(), "ZNCrs");
    EXPECT_EQ(Crs::fromElement(e), Crs::fromEpsg(2154));
    const QDomElement empty = Crs().createElement(doc);
    EXPECT_EQ(empty.attribute("value"), "");
    EXPECT_TRUE(Crs::fromElement(empty).isEmpty());
    EXPECT_TRUE(Crs::fromElement(QDomElement()).isEmpty());
}

TEST(UnitObject, TimeUnitsGiveDomainIndexOneAndDepthUnitsTwo)
{
    struct Case {
        int verticalUnit;
        bool time;
    };
    for (const Case& c : {Case{0, false}, Case{1, false}, Case{2, true}, Case{3, true}}) {
        UnitObject u(UnitObject::SpatialMetre, c.verticalUnit);
        EXPECT_EQ(u.isTime(), c.time) << c.verticalUnit;
        // The file formats' vertical domain code is 2 - index: 1 for time.
        EXPECT_EQ(2 - u.getDomainIndex() == 1, c.time) << c.verticalUnit;
    }
}

TEST(UnitObject, ElementRoundTripKeepsUnitsAndBothSystems)
{
    UnitObject u(UnitObject::SpatialFoot, UnitObject::VerticalMillisecond);
    u.setCrs(Crs::fromEpsg(32631));
    u.setDisplayCrs(Crs::fromEpsg(32632));
    QDomDocument doc;
    const QDomElement e = u.createElement(doc);
    EXPECT_EQ(e.tagName(), "unitsObject");
    EXPECT_EQ(UnitObject::fromElement(e), u);
    EXPECT_EQ(UnitObject::fromElement(QDomElement()), UnitObject());
}
