#include <gtest/gtest.h>

#include <znfaultstick.h>

using core::vec3;

TEST(FaultStick, DefaultIsTheNoValueStick)
{
    const ZNFaultStick s;
    EXPECT_EQ(s.start(), vec3(-9999, -9999, -9999));
    EXPECT_EQ(s.end(), vec3(-9999, -9999, -9999));
    EXPECT_EQ(s.firstIndex(), 0);
    EXPECT_EQ(s.secondIndex(), 0);
    EXPECT_TRUE(s.GetFaultName().isEmpty());
}

TEST(FaultStick, EqualityIgnoresNamesButNotIndicesOrCoordinates)
{
    ZNFaultStick a({1, 2, 3}, {4, 5, 6}, 7, 8);
    ZNFaultStick b(a);
    a.SetFaultName("F1");
    b.SetFaultName("F2");
    EXPECT_EQ(a, b);
    EXPECT_NE(a, ZNFaultStick({1, 2, 3}, {4, 5, 6}, 8, 7));
    EXPECT_NE(a, ZNFaultStick({1, 2, 3}, {4, 5, 6.000001}, 7, 8));
    ZNFaultStick c;
    c = a;
    EXPECT_EQ(c.GetFaultName(), "F1") << "copies keep the name";
}

TEST(FaultStick, IsNamedRefusesEmptyAndUnnamed)
{
    const struct {
        const char* name;
        bool named;
    } cases[] = {{"", false}, {"Unnamed", false}, {"unnamed", true}, {"F 12", true}};
    for (const auto& c : cases) {
        ZNFaultStick s;
        s.SetFaultName(c.name);
        EXPECT_EQ(s.IsNamed(), c.named) << c.name;
    }
}

TEST(FaultStick, MatrixTransformDividesEachEndByItsOwnW)
{
    ZNFaultStick s({1, 2, 3}, {2, 0, 0}, 0, 0);
    core::mat4 m = core::mat4::translation({10, 0, 0});
    m.m[12] = 1.0;  // w = x + 1
    s.applyMatrixTransformation(m);
    EXPECT_EQ(s.start(), vec3(11.0 / 2, 2.0 / 2, 3.0 / 2));
    EXPECT_EQ(s.end(), vec3(12.0 / 3, 0, 0));
}
