#include <gtest/gtest.h>

#include <memory>

#include <exchange/faultsetsticks.h>
#include <znfaultpatchmanager.h>

#include "exchangetesthelpers.h"

using namespace fault::exchange;

TEST(FaultSetSticks, SticksMadeIntoAFaultSetComeBackWithTheirNamesSticksAndDomain)
{
    for (VerticalDomain domain : {VerticalDomain::Time, VerticalDomain::Depth}) {
        StickSet sticks = exchangetest::sampleSet(false);
        sticks.domain = domain;
        const std::unique_ptr<ZNFaultPatchManager> set(faultSetFromSticks(sticks));
        ASSERT_TRUE(set);
        EXPECT_TRUE(set->isPicked());
        EXPECT_EQ(set->GetUnitObject().isTime(), domain == VerticalDomain::Time);
        ASSERT_EQ(set->getFaultLightList().size(), static_cast<int>(sticks.faults.size()));
        EXPECT_EQ(set->findFaultLight(1)->GetFaultName(), sticks.faults[0].name);
        const StickSet back = sticksOfFaultSet(*set);
        EXPECT_EQ(back.domain, domain);
        exchangetest::expectSameSticks(sticks, back, 0.0, false);
    }
}

TEST(FaultSetSticks, AFaultSetWithoutFaultsGivesNoSticks)
{
    ZNFaultPatchManager empty;
    const StickSet sticks = sticksOfFaultSet(empty);
    EXPECT_TRUE(sticks.faults.empty());
    EXPECT_EQ(sticks.domain, VerticalDomain::Depth);
    const std::unique_ptr<ZNFaultPatchManager> none(faultSetFromSticks(StickSet()));
    ASSERT_TRUE(none);
    EXPECT_TRUE(none->getFaultLightList().isEmpty());
}
