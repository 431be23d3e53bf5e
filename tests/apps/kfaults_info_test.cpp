#include <gtest/gtest.h>

#include <sstream>

#include <QRegularExpression>
#include <QTemporaryDir>

#include <core/multiarray.h>
#include <znfaultpatchmanager.h>

#include <commandline.h>

namespace {
std::string info(const QString& path)
{
    std::ostringstream out, err;
    EXPECT_EQ(kfaults::runKfaults({"kfaults", "info", path.toStdString()}, out, err), 0) << err.str();
    return out.str();
}
} // namespace

TEST(KfaultsInfo, EachFaultCountsTheSticksAndPointsOfAllItsPatches)
{
    // Five patches of one stick each (2, 3, 4, 5, 6 points); patches 2 and 4 join fault
    // 1, patch 5 joins fault 3.
    core::MultiArray<core::vec3> rows(5);
    for (int f = 0; f < 5; ++f)
        for (int p = 0; p < 2 + f; ++p) rows.addElement(f, core::vec3(10.0 * f, 5.0 * p, 0.0), false);
    ZNFaultPatchManager set(rows);
    set.setFather(2, 1);
    set.setFather(4, 1);
    set.setFather(5, 3);
    set.initElementListBis();
    for (int id : {2, 4, 5}) set.removeFaultLight(id);
    QTemporaryDir dir;
    ASSERT_TRUE(set.writePickedFault(dir.filePath("set"), false, nullptr, false));
    const QStringList faults =
        QString::fromStdString(info(dir.filePath("set"))).split('\n').filter(QRegularExpression("^fault "));
    EXPECT_EQ(faults, (QStringList{"fault 1 \"Unnamed\": 3 sticks, 10 points",
                                   "fault 3 \"Unnamed\": 2 sticks, 10 points"}));
}
