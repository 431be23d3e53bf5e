// A host application's smallest use of the installed library: two coplanar patches.
#include <cstdio>

#include <core/multiarray.h>
#include <znfaultpatch.h>

int main()
{
    ZNFaultPatch a, b;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) {
            a.addPoint({double(i), double(j), 0.0});
            b.addPoint({double(i) + 10.0, double(j), 0.0});
        }
    core::MultiArray<core::PointWithBool> points(2);
    points.addElement(1, core::PointWithBool(1, 2, 3), false);
    std::printf("merge cost %g, %d point\n", a.getMergeCost(b), points.getCount(1));
    return 0;
}
