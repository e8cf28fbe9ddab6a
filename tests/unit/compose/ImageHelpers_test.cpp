// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/ColorMatrix.h"
#include "compose/ImageHelpers.h"

#include <gmock/gmock.h>

#include <random>

namespace {

using namespace lumavex;

/// Every pixel says where it stands, counted from the lower left; the fourth byte holds rubbish.
QImage positions(int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            reinterpret_cast<QRgb*>(image.scanLine(y))[x] = qRgba(x & 255, (height - 1 - y) & 255, x >> 8, 0x17);
    return image;
}

TEST(ImageHelpers, PartOfImageCutsUpwardRectangles)
{
    const QImage part = partOfImage(positions(1920, 1080), {100, 100, 200, 100});
    ASSERT_EQ(part.size(), QSize(200, 100));
    EXPECT_EQ(part.pixel(0, 99), qRgb(100, 100, 0));
    EXPECT_EQ(part.pixel(199, 0), qRgb(299 & 255, 199, 1));
    EXPECT_TRUE(partOfImage({}, {0, 0, 10, 10}).isNull());
    EXPECT_TRUE(partOfImage(positions(9, 9), {0, 0, 0, 10}).isNull());
}

TEST(ImageHelpers, PartOfImageIsTransparentOutsideThePicture)
{
    const QImage part = partOfImage(positions(40, 30), {-5, -21.8182, 20, 40});
    ASSERT_EQ(part.size(), QSize(20, 40));
    EXPECT_EQ(part.pixel(5, 17), qRgb(0, 0, 0)); // the picture's lower left corner, at (5, 22) upward
    EXPECT_EQ(part.pixel(4, 17), 0U);
    EXPECT_EQ(part.pixel(5, 18), 0U);
    EXPECT_EQ(part.pixel(19, 0), qRgb(14, 17, 0));
    const QImage elsewhere = partOfImage(positions(40, 30), {100, 0, 3, 3});
    EXPECT_EQ(elsewhere.pixel(1, 1), 0U);
}

TEST(ImageHelpers, FittingDrawsOnBlackAndCutsTheOvershoot)
{
    QImage picture(640, 480, QImage::Format_RGB32);
    picture.fill(Qt::white);
    const QImage canvas = Return_Image_For_Region_IntoRect(picture, {7, 7, 1920, 1080});
    ASSERT_EQ(canvas.size(), QSize(1920, 1080));
    for (const int y : {0, 540, 1079}) {
        EXPECT_EQ(canvas.pixel(158, y), 0xFF000000);
        EXPECT_EQ(canvas.pixel(161, y), 0xFFFFFFFF);
        EXPECT_EQ(canvas.pixel(1758, y), 0xFFFFFFFF);
        EXPECT_EQ(canvas.pixel(1761, y), 0xFF000000);
    }
    EXPECT_TRUE(Return_Image_For_Region_IntoRect({}, {0, 0, 100, 100}).isNull()); // as it came, no canvas
}

TEST(ImageHelpers, NeutralControlsChangeNoPixel)
{
    const QImage picture = positions(256, 256).convertToFormat(QImage::Format_RGB32);
    EXPECT_EQ(imageColorControls(picture, {}), picture);
    QImage translucent(3, 3, QImage::Format_ARGB32);
    translucent.fill(qRgba(200, 100, 50, 77));
    EXPECT_EQ(imageColorControls(translucent, {}), translucent);
}

TEST(ImageHelpers, ColorControlsFollowTheirFormula)
{
    QImage picture(1, 1, QImage::Format_RGB32);
    const auto controlled = [&picture](QRgb pixel, ColorControls controls) {
        picture.setPixel(0, 0, pixel);
        return imageColorControls(picture, controls).pixel(0, 0);
    };
    // without saturation every pixel is its luma
    EXPECT_EQ(controlled(qRgb(255, 0, 0), {0, 0, 10}), qRgb(54, 54, 54));
    EXPECT_EQ(controlled(qRgb(0, 255, 0), {0, 0, 10}), qRgb(182, 182, 182));
    EXPECT_EQ(controlled(qRgb(0, 0, 255), {0, 0, 10}), qRgb(18, 18, 18));
    // saturation leaves grey alone
    for (int grey = 0; grey < 256; ++grey)
        EXPECT_EQ(controlled(qRgb(grey, grey, grey), {17, 0, 10}), qRgb(grey, grey, grey));
    EXPECT_EQ(controlled(qRgb(100, 50, 150), {20, 0, 10}), qRgb(132, 32, 232)); // luma 67.85
    // brightness is added, contrast turns about mid grey; both end at the limits
    EXPECT_EQ(controlled(qRgb(0, 100, 250), {10, 2, 10}), qRgb(51, 151, 255));
    EXPECT_EQ(controlled(qRgb(0, 100, 250), {10, -2, 10}), qRgb(0, 49, 199));
    EXPECT_EQ(controlled(qRgb(100, 127, 250), {10, 0, 20}), qRgb(73, 127, 255));
    EXPECT_EQ(controlled(qRgb(3, 128, 250), {10, 0, 0}), qRgb(128, 128, 128));
    EXPECT_EQ(controlled(qRgb(3, 128, 250), {10, 1e9F, 1e9F}), qRgb(255, 255, 255));
}

TEST(ImageHelpers, TheCamerasMatrixFollowsThem)
{
    std::mt19937 random(1);
    const auto between = [&random](float low, float high) {
        return std::uniform_real_distribution<float>(low, high)(random);
    };
    QImage picture(64, 16, QImage::Format_ARGB32);
    for (int round = 0; round < 200; ++round) {
        const ColorControls controls{between(0, 20), between(-10, 10), between(0, 40)};
        for (int i = 0; i < 64 * 16; ++i)
            picture.setPixel(i % 64, i / 64, random());
        QImage fast = picture;
        ColorMatrix(controls.f_ColorControls_Saturation, controls.f_ColorControls_Brightness,
                    controls.f_ColorControls_Contrast)
            .apply(reinterpret_cast<std::uint32_t*>(fast.bits()), 64 * 16);
        const QImage exact = imageColorControls(CGImageRefFromImage(picture), controls);
        for (std::ptrdiff_t i = 0; i < exact.sizeInBytes(); ++i)
            ASSERT_NEAR(fast.constBits()[i], exact.constBits()[i], 1) << round;
    }
}

TEST(ImageHelpers, ConversionsShareThePixelsAndDropTheScale)
{
    QImage drawable(20, 10, QImage::Format_RGB32);
    drawable.fill(Qt::green);
    EXPECT_EQ(CGImageRefFromImage(drawable).constBits(), drawable.constBits());
    drawable.setDevicePixelRatio(2);
    const QImage pixels = CGImageRefFromImage(drawable);
    EXPECT_EQ(pixels.devicePixelRatio(), 1);
    EXPECT_EQ(imageFromCGImageRef(pixels).deviceIndependentSize(), QSizeF(20, 10));
    EXPECT_EQ(drawable.devicePixelRatio(), 2);
}

} // namespace
