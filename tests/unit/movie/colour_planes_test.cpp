// SPDX-License-Identifier: GPL-3.0-or-later
#include "movie/ColourPlanes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace lumavex {
namespace {

struct Colour {
    double red;
    double green;
    double blue;
};

/// A picture whose rows have a gap behind them, and no byte more than that.
struct Pixels {
    Pixels(int pixelsWide, int pixelsHigh, unsigned seed) : width(pixelsWide), height(pixelsHigh)
    {
        std::mt19937 random(seed);
        bytes.resize(static_cast<std::size_t>(rowBytes() * (height - 1) + 4 * width));
        // Squares of the pure colours and of greys, whose chroma reaches the ends of its range, and noise.
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            const std::size_t x = i % std::size_t(rowBytes()) / 8;
            const std::size_t square = x + i / std::size_t(rowBytes()) / 2 * 3;
            bytes[i] = static_cast<std::uint8_t>(square % 3 == 0   ? (square / 3 >> i % 4 & 1) * 255
                                                 : square % 3 == 1 ? square * 37
                                                                   : random());
        }
    }
    int rowBytes() const { return 4 * width + 12; }
    Colour at(int x, int y) const
    {
        const auto offset = static_cast<std::size_t>(rowBytes() * std::min(y, height - 1) + 4 * std::min(x, width - 1));
        return {double(bytes[offset + 1]), double(bytes[offset + 2]), double(bytes[offset + 3])};
    }
    CVPixelBuffer buffer() const
    {
        return {width, height, kCVPixelFormatType_32ARGB, bytes.data(), rowBytes(), nullptr, nullptr};
    }

    int width;
    int height;
    std::vector<std::uint8_t> bytes;
};

double luma(const Colour& c)
{
    return 0.299 * c.red + 0.587 * c.green + 0.114 * c.blue;
}
double blue(const Colour& c)
{
    return 128 + (c.blue - luma(c)) / 1.772;
}
double red(const Colour& c)
{
    return 128 + (c.red - luma(c)) / 1.402;
}

template <typename Plane>
double meanOfFour(const Pixels& pixels, int x, int y, Plane plane)
{
    // Past the edge the last pixel is repeated.
    return (plane(pixels.at(2 * x, 2 * y)) + plane(pixels.at(2 * x + 1, 2 * y)) + plane(pixels.at(2 * x, 2 * y + 1))
            + plane(pixels.at(2 * x + 1, 2 * y + 1)))
           / 4;
}

TEST(ColourPlanes, AreTheFormulasRoundedOnceUpToAndPastTheEdges)
{
    if (!ColourPlanes::isFast())
        GTEST_SKIP() << "this processor leaves it to the JPEG library";
    ColourPlanes planes;
    for (const auto& [width, height] : {std::pair{1, 1}, {2, 2}, {15, 3}, {16, 16}, {17, 33}, {31, 47}, {64, 18}}) {
        const Pixels pixels(width, height, static_cast<unsigned>(width));
        const CVPixelBuffer buffer = pixels.buffer();
        ASSERT_TRUE(planes.prepare(width));
        for (int row = 0; row < allMacroblockRows(height).count; ++row) {
            planes.convert(buffer, row);
            for (int y = 0; y < 16; ++y) {
                for (int x = 0; x < (width + 15) / 16 * 16; ++x)
                    ASSERT_NEAR(planes.planes()[0][y][x], luma(pixels.at(x, 16 * row + y)), 0.51) << x << ',' << y;
            }
            // Whole pairs of rows are repeated, not the last row's colours alone.
            const int lastPair = (height + 1) / 2 - 1;
            for (int y = 0; y < 8; ++y) {
                for (int x = 0; x < (width + 15) / 16 * 8; ++x) {
                    const int pair = std::min(8 * row + y, lastPair);
                    ASSERT_NEAR(planes.planes()[1][y][x], meanOfFour(pixels, x, pair, blue), 0.52) << x << ',' << y;
                    ASSERT_NEAR(planes.planes()[2][y][x], meanOfFour(pixels, x, pair, red), 0.52) << x << ',' << y;
                }
            }
        }
    }
}

} // namespace
} // namespace lumavex
