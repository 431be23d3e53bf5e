#include <gtest/gtest.h>

#include <cmath>

#include <attribute/faultattributesettings.h>
#include <attribute/faultscans.h>

using namespace fault::attribute;

TEST(FaultScans, ThePlanHoldsEveryOrientationTheSettingsAskForOnce)
{
    struct Case {
        double strikeStep, minDip, maxDip, dipStep;
        int expected;
    };
    const Case cases[] = {
        {6.0, 50.0, 90.0, 8.0, 60 * 6 - 30},   // the defaults: vertical planes once
        {10.0, 60.0, 80.0, 10.0, 36 * 3},      // no vertical planes
        {45.0, 90.0, 90.0, 5.0, 4},            // vertical only, 8 strikes halved
        {7.0, 40.0, 90.0, 25.0, 51 * 3},       // odd strike count: no halving
    };
    for (const Case& c : cases) {
        FaultAttributeSettings s;
        s.strikeStep = c.strikeStep;
        s.minDip = c.minDip;
        s.maxDip = c.maxDip;
        s.dipStep = c.dipStep;
        const ScanPlan plan = planScans(s);
        EXPECT_EQ(static_cast<int>(plan.scans.size()), c.expected) << c.strikeStep;
        EXPECT_EQ(scanCount(s), c.expected) << c.strikeStep;
        std::size_t windows = 0;
        bool transposedSeen = false;
        for (const StrikeGroup& g : plan.groups) {
            EXPECT_LE(std::fabs(g.shift), 1.0 + 1e-9);
            EXPECT_FALSE(transposedSeen && !g.transposed) << "untransposed groups come first";
            transposedSeen = transposedSeen || g.transposed;
            windows += g.dips.size();
            for (const DipWindow& w : g.dips) {
                const FaultScan& scan = plan.scans[static_cast<std::size_t>(w.scan)];
                EXPECT_NEAR(scan.normal.length(), 1.0, 1e-12);
                EXPECT_LE(scan.normal.z, 0.0);
                EXPECT_GE(scan.dip, c.minDip - 1e-9);
                EXPECT_LE(scan.dip, c.maxDip + 1e-9);
                EXPECT_LE(w.halfSteps, plan.maxHalfSteps);
            }
        }
        EXPECT_EQ(windows, plan.scans.size());
    }
}

TEST(FaultScans, TheWindowsLieInTheirPlanes)
{
    const ScanPlan plan = planScans(FaultAttributeSettings());
    for (const StrikeGroup& g : plan.groups)
        for (const DipWindow& w : g.dips) {
            const core::vec3& n = plan.scans[static_cast<std::size_t>(w.scan)].normal;
            // Along strike: one step along b moves `shift` along a; down dip: one slice
            // moves `shift` along a.
            const core::vec3 strike = g.transposed ? core::vec3(1.0, g.shift, 0.0) : core::vec3(g.shift, 1.0, 0.0);
            const core::vec3 down = g.transposed ? core::vec3(0.0, w.shift, 1.0) : core::vec3(w.shift, 0.0, 1.0);
            EXPECT_NEAR(strike.dot(n), 0.0, 1e-9);
            EXPECT_NEAR(down.dot(n), 0.0, 1e-9);
        }
}

TEST(FaultAttributeSettings, UnusableSettingsAreRefusedWithAReason)
{
    auto with = [](auto change) {
        FaultAttributeSettings s;
        change(s);
        return s.problem();
    };
    EXPECT_TRUE(FaultAttributeSettings().problem().isEmpty());
    EXPECT_FALSE(with([](FaultAttributeSettings& s) { s.strikeStep = 0.0; }).isEmpty());
    EXPECT_FALSE(with([](FaultAttributeSettings& s) { s.strikeStep = 1e-9; }).isEmpty());   // too many scans
    EXPECT_FALSE(with([](FaultAttributeSettings& s) { s.minDip = 10.0; }).isEmpty());
    EXPECT_FALSE(with([](FaultAttributeSettings& s) { s.maxDip = 40.0; }).isEmpty());       // below minDip
    EXPECT_FALSE(with([](FaultAttributeSettings& s) { s.dipHalfLength = 0.5; }).isEmpty());
    EXPECT_FALSE(with([](FaultAttributeSettings& s) { s.strikeSigma = std::nan(""); }).isEmpty());
    EXPECT_FALSE(with([](FaultAttributeSettings& s) { s.semblancePower = 0.5; }).isEmpty());
    EXPECT_FALSE(with([](FaultAttributeSettings& s) { s.maxReflectorSlope = -1.0; }).isEmpty());
    EXPECT_TRUE(planScans(FaultAttributeSettings{0.0}).scans.empty());
}
