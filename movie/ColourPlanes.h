// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "movie/JpegBuffer.h"
#include "movie/JpegRows.h"
#include "platform/MovieWriter.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace lumavex {

/// Two rows of pixels and the destinations of their planes.
struct PixelRowPair {
    const std::uint8_t* upper;
    const std::uint8_t* lower;
    std::uint8_t* upperLuma;
    std::uint8_t* lowerLuma;
    std::uint8_t* blue; ///< chroma, half as many samples as pixels
    std::uint8_t* red;
};

/// Converts 16 * `sixteens` pixels of both rows.
using ConvertPixelRowPair = void (*)(const PixelRowPair& rows, std::size_t sixteens);
/// Null when the processor lacks AVX2.
ConvertPixelRowPair avx2ConvertPixelRowPair();

/// Samples whose rows are `stride` bytes apart.
struct PlaneView {
    const std::uint8_t* samples;
    std::ptrdiff_t stride;
    const std::uint8_t* row(std::size_t index) const { return samples + static_cast<std::ptrdiff_t>(index) * stride; }
};

/// One row of macroblocks as JPEG planes (JFIF: full range, ITU-R BT.601). Each chroma sample is the mean of four
/// pixels, rounded once. Beyond the picture's edges the last pixels are repeated. Unlike the picture, the planes fit in
/// the processor's cache. One thread at a time.
class ColourPlanes {
public:
    /// True when the processor has AVX2, with which this is faster than the JPEG library.
    static bool isFast() { return avx2ConvertPixelRowPair() != nullptr; }

    /// Allocates memory for pictures of this width. False when there is none.
    bool prepare(int width);
    void convert(const CVPixelBuffer& pixels, int macroblockRow);

    /// 16, 8 and 8 rows. Valid until the next call of prepare() or convert().
    PlaneView luma() const { return {luma_[0], luma_[1] - luma_[0]}; }
    PlaneView blue() const { return {blue_[0], blue_[1] - blue_[0]}; }
    PlaneView red() const { return {red_[0], red_[1] - red_[0]}; }
    /// The same planes in the form that the JPEG library accepts.
    std::uint8_t*** planes() { return planes_.data(); }

private:
    void convertPair(const CVPixelBuffer& pixels, int row, int pair);

    const ConvertPixelRowPair convert_ = avx2ConvertPixelRowPair();
    JpegBuffer memory_;
    std::array<std::uint8_t*, kMacroblockHeight> luma_{};
    std::array<std::uint8_t*, kMacroblockHeight / 2> blue_{};
    std::array<std::uint8_t*, kMacroblockHeight / 2> red_{};
    std::array<std::uint8_t**, 3> planes_{luma_.data(), blue_.data(), red_.data()};
    /// Copies of the last pixels of two rows when the width is not a multiple of 16.
    std::array<std::array<std::uint8_t, std::size_t{4} * 16>, 2> rest_{};
};

} // namespace lumavex
