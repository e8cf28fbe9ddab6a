// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/ColorMatrix.h"

#include <QColor>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace lumavex {
namespace {

QRgb applied(const ColorMatrix& matrix, QRgb pixel)
{
    std::uint32_t value = pixel;
    matrix.apply(&value, 1);
    return value;
}

/// The formula as it stands, in floating point.
double exact(double channel, double luma, double s, double b, double k)
{
    const double v = luma + s * (channel - luma) + 255 * b;
    return std::clamp(127.5 + k * (v - 127.5), 0.0, 255.0);
}

std::vector<std::uint32_t> randomPixels(std::size_t count)
{
    std::mt19937 random(7);
    std::vector<std::uint32_t> pixels(count);
    for (std::uint32_t& pixel : pixels)
        pixel = random();
    return pixels;
}

TEST(ColorMatrix, NeutralControlsChangeNoPixel)
{
    const ColorMatrix neutral(10, 0, 10);
    EXPECT_TRUE(neutral.isNeutral());
    const auto before = randomPixels(5000);
    auto after = before;
    neutral.apply(after.data(), after.size());
    EXPECT_EQ(after, before);
    EXPECT_FALSE(ColorMatrix(10, 0.1F, 10).isNeutral());
}

TEST(ColorMatrix, FollowsTheFormulaForAnyControls)
{
    std::mt19937 random(1);
    std::uniform_real_distribution<float> saturation(0, 20);
    std::uniform_real_distribution<float> brightness(-10, 10);
    std::uniform_real_distribution<float> contrast(0, 40);
    for (int round = 0; round < 200; ++round) {
        const float s = saturation(random);
        const float b = brightness(random);
        const float k = contrast(random);
        const ColorMatrix matrix(s, b, k);
        for (const QRgb pixel : randomPixels(100)) {
            const double luma = 0.2126 * qRed(pixel) + 0.7152 * qGreen(pixel) + 0.0722 * qBlue(pixel);
            const QRgb result = applied(matrix, pixel);
            ASSERT_NEAR(qRed(result), exact(qRed(pixel), luma, s / 10, b / 10, k / 10), 0.75);
            ASSERT_NEAR(qGreen(result), exact(qGreen(pixel), luma, s / 10, b / 10, k / 10), 0.75);
            ASSERT_NEAR(qBlue(result), exact(qBlue(pixel), luma, s / 10, b / 10, k / 10), 0.75);
        }
    }
}

TEST(ColorMatrix, RowsOfAnyLengthAndExtremeControlsGiveWhatSinglePixelsGive)
{
    const float huge = std::numeric_limits<float>::max();
    for (const ColorMatrix& matrix : {ColorMatrix(17, 1, 13), ColorMatrix(huge, -huge, huge),
                                      ColorMatrix(std::nanf(""), huge, -huge), ColorMatrix(-160, 160, 160)}) {
        for (std::size_t count = 0; count < 40; ++count) {
            const auto before = randomPixels(count + 1);
            auto row = before;
            matrix.apply(row.data(), count);
            for (std::size_t i = 0; i < count; ++i)
                ASSERT_EQ(row[i], applied(matrix, before[i]));
            EXPECT_EQ(row.back(), before.back()) << "wrote past the end";
        }
    }
}

} // namespace
} // namespace lumavex
