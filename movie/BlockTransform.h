// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace lumavex {

/// Coefficients, and samples, in a block.
inline constexpr std::size_t kBlockSize = 64;

/// Where the coefficients lie in a block, row by row, in the order in which they are coded: ISO/IEC 10918-1, figure
/// A.6.
inline constexpr std::array<std::uint8_t, kBlockSize> kCodingOrder = {
    0,  1,  8,  16, 9,  2,  3,  10, 17, 24, 32, 25, 18, 11, 4,  5,  //
    12, 19, 26, 33, 40, 48, 41, 34, 27, 20, 13, 6,  7,  14, 21, 28, //
    35, 42, 49, 56, 57, 50, 43, 36, 29, 22, 15, 23, 30, 37, 44, 51, //
    58, 59, 52, 45, 38, 31, 39, 46, 53, 60, 61, 54, 47, 55, 62, 63,
};

/// A block's quantised coefficients.
struct alignas(32) QuantisedBlock {
    std::array<std::int8_t, kBlockSize> values; ///< in the order in which they are coded
    std::uint64_t nonZero;                      ///< bit k tells that values[k] is not zero
    bool saturated;                             ///< whether a value but the mean is not within -127 to 127
    /// All of them row by row; set only when `saturated`. 32-byte aligned for the vectors that store it.
    alignas(32) std::array<std::int16_t, kBlockSize> wide;
};

/// How quotients of coefficients become integers. Means are always rounded to the nearest.
enum class Rounding {
    Nearest, ///< as the JPEG library does
    /// Up from nine sixteenths on. Most coefficients lie near zero, so the smaller of two integers is the likelier one:
    /// at the same steps pictures are nearly as like, and a tenth smaller when they have grain.
    Sparing,
};

/// What dividing by the quantisation's steps comes down to, row by row. A mean's step must be 8 at least, so that every
/// mean is a byte, and the others' 6 to 31.
struct alignas(32) Quantiser {
    Quantiser(const std::array<unsigned int, kBlockSize>& steps, Rounding rounding);

    static constexpr int kShift = 5;            ///< beyond the 16 bits of a high product
    std::array<std::uint16_t, kBlockSize> bias; ///< half a step, or less
    std::array<std::uint16_t, kBlockSize> reciprocal;
};

/// Transforms and quantises two blocks of 8 by 8 samples whose rows lie `stride` bytes apart. To the bit as the
/// accurate integer transform of the JPEG library does: C. Loeffler, A. Ligtenberg, G. Moschytz, "Practical fast 1-D
/// DCT algorithms with 11 multiplications", ICASSP 1989, in 13 bits of fraction, rounded after each direction.
using TransformBlockPair = void (*)(const std::uint8_t* first, const std::uint8_t* second, std::ptrdiff_t stride,
                                    const Quantiser& quantiser, std::array<QuantisedBlock, 2>& blocks);
/// Null when this processor lacks the instructions.
TransformBlockPair avx2TransformBlockPair();

} // namespace lumavex
