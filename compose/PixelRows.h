// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>

// The inner loops of drawing, one row at a time. Any thread. A pixel is four bytes; both variants of each loop give the
// same bytes.

namespace lumavex {

/// Order of a pixel's four bytes in memory.
enum class PixelOrder {
    BlueFirst,  ///< blue, green, red, alpha: pictures on screen
    AlphaFirst, ///< alpha, red, green, blue: pixel buffers
};

/// Treatment of a pixel's alpha.
enum class AlphaUse {
    Opaque, ///< the source's alpha byte is undefined; the result's is 255
    Kept,
};

/// Order and alpha of written pixels; the source pixels are blue first.
struct PixelStore {
    PixelOrder order = PixelOrder::BlueFirst;
    AlphaUse alpha = AlphaUse::Opaque;
};

/// One column of a horizontal scaling: the weighted sum of the pixels `first` and `first` + 1, whose weights add up to
/// 128.
struct ColumnTaps {
    const std::int32_t* first = nullptr;
    const std::uint16_t* weights = nullptr; ///< low byte: weight of the left pixel, high byte: of the right one
};

struct RowFunctions {
    /// Copies pixels, blue first, in the order and with the alpha of `store`.
    void (*copy)(std::uint32_t* to, const std::uint32_t* from, std::size_t pixels, PixelStore store);
    /// Mixes two rows byte by byte; `lowerWeight` of 256 parts (1 to 255) is the share of the lower one.
    void (*mix)(std::uint32_t* to, const std::uint32_t* upper, const std::uint32_t* lower, std::size_t pixels,
                int lowerWeight);
    void (*scaleColumns)(std::uint32_t* to, const std::uint32_t* row, const ColumnTaps& taps, std::size_t pixels,
                         PixelStore store);
    /// Adds a row to 16-bit sums, four per pixel.
    void (*addToSums)(std::uint64_t* sums, const std::uint32_t* row, std::size_t pixels);
    /// Adds neighbouring pairs of a row to `sumCount` sums.
    void (*addPairsToSums)(std::uint64_t* sums, const std::uint32_t* row, std::size_t sumCount);
    /// Adds neighbouring pairs of sums in place, which leaves `pixels` of them.
    void (*addPairs)(std::uint64_t* sums, std::size_t pixels);
    /// The same for neighbouring triples.
    void (*addTriples)(std::uint64_t* sums, std::size_t pixels);
    /// Divides sums, rounded to nearest, by a divisor up to 256 whose only prime factors are 2 and at most two 3s.
    void (*divideSums)(std::uint32_t* to, const std::uint64_t* sums, std::size_t pixels, int divisor);
    /// Draws premultiplied pixels over those of `to`, which have the same order.
    void (*blend)(std::uint32_t* to, const std::uint32_t* over, std::size_t pixels, PixelOrder order);
};

/// The fastest variant for this processor.
const RowFunctions& rowFunctions();
/// The variant in plain C++.
const RowFunctions& plainRowFunctions();
/// The variant for processors with AVX2; null on others.
const RowFunctions* avx2RowFunctions();

} // namespace lumavex
