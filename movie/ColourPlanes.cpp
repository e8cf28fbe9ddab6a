// SPDX-License-Identifier: GPL-3.0-or-later
#include "movie/ColourPlanes.h"

#include <algorithm>
#include <cstring>

namespace lumavex {

namespace {

constexpr std::size_t kPixelBytes = 4;

std::size_t sixteensIn(int width)
{
    return (static_cast<std::size_t>(width) + 15) / 16;
}

// Copies the pixels from `first` on and repeats the last one up to sixteen.
void copyRest(const std::uint8_t* row, std::size_t first, std::size_t width, std::uint8_t* rest)
{
    std::memcpy(rest, row + first * kPixelBytes, (width - first) * kPixelBytes);
    for (std::size_t i = width - first; i < 16; ++i)
        std::memcpy(rest + i * kPixelBytes, row + (width - 1) * kPixelBytes, kPixelBytes);
}

} // namespace

bool ColourPlanes::prepare(int width)
{
    const std::size_t lumaWidth = sixteensIn(width) * 16;
    if (!memory_.grow(lumaWidth * kMacroblockHeight * 3 / 2))
        return false;
    std::uint8_t* at = memory_.data();
    for (std::uint8_t*& row : luma_) {
        row = at;
        at += lumaWidth;
    }
    for (auto* plane : {&blue_, &red_}) {
        for (std::uint8_t*& row : *plane) {
            row = at;
            at += lumaWidth / 2;
        }
    }
    return true;
}

void ColourPlanes::convert(const CVPixelBuffer& pixels, int macroblockRow)
{
    const int top = macroblockRow * kMacroblockHeight;
    const int pairs = std::min(kMacroblockHeight, pixels.height - top + 1) / 2;
    for (int pair = 0; pair < pairs; ++pair)
        convertPair(pixels, top + 2 * pair, pair);

    const std::size_t lumaWidth = sixteensIn(pixels.width) * 16;
    for (auto pair = static_cast<std::size_t>(pairs); pair < blue_.size(); ++pair) {
        std::memcpy(luma_[2 * pair], luma_[2 * pair - 1], lumaWidth);
        std::memcpy(luma_[2 * pair + 1], luma_[2 * pair - 1], lumaWidth);
        std::memcpy(blue_[pair], blue_[pair - 1], lumaWidth / 2);
        std::memcpy(red_[pair], red_[pair - 1], lumaWidth / 2);
    }
}

void ColourPlanes::convertPair(const CVPixelBuffer& pixels, int row, int pair)
{
    const auto at = static_cast<std::size_t>(pair);
    const int below = std::min(row + 1, pixels.height - 1);
    PixelRowPair rows = {pixels.baseAddress + std::ptrdiff_t{pixels.bytesPerRow} * row,
                         pixels.baseAddress + std::ptrdiff_t{pixels.bytesPerRow} * below,
                         luma_[2 * at],
                         luma_[2 * at + 1],
                         blue_[at],
                         red_[at]};
    const auto width = static_cast<std::size_t>(pixels.width);
    const std::size_t whole = width / 16;
    convert_(rows, whole);
    if (whole * 16 == width)
        return;
    copyRest(rows.upper, whole * 16, width, rest_[0].data());
    copyRest(rows.lower, whole * 16, width, rest_[1].data());
    rows = {rest_[0].data(),       rest_[1].data(),     rows.upperLuma + whole * 16, rows.lowerLuma + whole * 16,
            rows.blue + whole * 8, rows.red + whole * 8};
    convert_(rows, 1);
}

} // namespace lumavex
