// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/ColorMatrix.h"

#include <QColor>

#include <gtest/gtest.h>

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
