#include <gtest/gtest.h>

#include <zbufferraster.h>

using kfaults::ZBufferRaster;
using core::vec3;

TEST(ZBufferRaster, TwoTrianglesOfASquareCoverEachPixelOnce)
{
    QImage image(64, 64, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    ZBufferRaster raster(image, image.rect());
    const vec3 a(8, 8, 1), b(40, 8, 1), c(40, 40, 1), d(8, 40, 1);
    raster.fillTriangle(a, b, c, qRgb(255, 0, 0));
    raster.fillTriangle(a, c, d, qRgb(255, 0, 0));
    EXPECT_EQ(raster.pixelsWritten(), 32 * 32);
}

TEST(ZBufferRaster, TheNearerTriangleWinsWhateverTheOrder)
{
    for (bool nearFirst : {true, false}) {
        QImage image(32, 32, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::white);
        ZBufferRaster raster(image, image.rect());
        auto near = [&] { raster.fillTriangle({0, 0, 0.5}, {32, 0, 0.5}, {0, 32, 0.5}, qRgb(0, 0, 255)); };
        auto far = [&] { raster.fillTriangle({0, 0, 0.1}, {32, 0, 0.1}, {0, 32, 0.1}, qRgb(255, 0, 0)); };
        if (nearFirst) near(), far();
        else far(), near();
        EXPECT_EQ(image.pixel(4, 4), qRgb(0, 0, 255));
        EXPECT_EQ(image.pixel(30, 30), qRgb(255, 255, 255));
    }
}

TEST(ZBufferRaster, PixelsOutsideTheClipAndDegenerateTrianglesAreLeftAlone)
{
    QImage image(32, 32, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    ZBufferRaster raster(image, QRect(0, 0, 16, 32));
    raster.fillTriangle({-100, -100, 1}, {200, -100, 1}, {-100, 200, 1}, qRgb(0, 255, 0));
    EXPECT_EQ(image.pixel(15, 5), qRgb(0, 255, 0));
    EXPECT_EQ(image.pixel(16, 5), qRgb(255, 255, 255));
    const long long before = raster.pixelsWritten();
    raster.fillTriangle({1, 1, 2}, {10, 10, 2}, {20, 20, 2}, qRgb(0, 0, 0));
    EXPECT_EQ(raster.pixelsWritten(), before) << "a zero-area triangle covers nothing";
}
