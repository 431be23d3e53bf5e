#include <gtest/gtest.h>

#include <QDir>

#include <znrecentfiles.h>

TEST(RecentFiles, NewestFirstWithoutRepeatsUpToTheLimitAndKeptInTheSettings)
{
    {
        ZNRecentFiles recent("RecentTest", 3);
        recent.clear();
        for (const char* path : {"/a.faultset", "/b.sgy", "/c.bloc", "/b.sgy", "/d.faultset"})
            EXPECT_TRUE(recent.add(path));
        EXPECT_EQ(recent.paths(), (QStringList{"/d.faultset", "/b.sgy", "/c.bloc"}));
    }
    ZNRecentFiles again("RecentTest", 3);
    EXPECT_EQ(again.paths().size(), 3);
    again.remove("/b.sgy");
    EXPECT_EQ(again.paths(), (QStringList{"/d.faultset", "/c.bloc"}));
    again.add("relative.faultset");
    EXPECT_EQ(again.paths().first(), QDir::current().absoluteFilePath("relative.faultset"));
}
