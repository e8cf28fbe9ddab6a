// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/movie/ColourPlanes.h"

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
        // Even patches with pure colours, in which a mean that rounds wrongly shows, and noise.
        for (std::uint8_t& byte : bytes)
            byte = static_cast<std::uint8_t>(random() % 4 == 0 ? random() : random() % 2 * 255);
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

TEST(ColourPlanes, GreysAndPureColoursKeepTheFullRange)
{
    if (!ColourPlanes::isFast())
        GTEST_SKIP() << "this processor leaves it to the JPEG library";
    ColourPlanes planes;
    ASSERT_TRUE(planes.prepare(16));
    const auto convert = [&](int r, int g, int b) {
        Pixels pixels(16, 16, 1);
        for (std::size_t i = 0; i + 4 <= pixels.bytes.size(); i += 4) {
            pixels.bytes[i + 1] = static_cast<std::uint8_t>(r);
            pixels.bytes[i + 2] = static_cast<std::uint8_t>(g);
            pixels.bytes[i + 3] = static_cast<std::uint8_t>(b);
        }
        planes.convert(pixels.buffer(), 0);
        return std::array{int{planes.planes()[0][5][9]}, int{planes.planes()[1][4][3]}, int{planes.planes()[2][4][3]}};
    };
    for (int grey = 0; grey < 256; ++grey)
        ASSERT_EQ(convert(grey, grey, grey), (std::array{grey, 128, 128}));
    EXPECT_EQ(convert(0, 0, 255), (std::array{29, 255, 107}));
    EXPECT_EQ(convert(255, 0, 0), (std::array{76, 85, 255}));
    EXPECT_EQ(convert(255, 255, 0)[1], 0);
    EXPECT_EQ(convert(0, 255, 255)[2], 0);
}

} // namespace
} // namespace lumavex
