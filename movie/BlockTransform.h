// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace lumavex {

/// Number of coefficients, and of samples, in a block.
inline constexpr std::size_t kBlockSize = 64;

/// Zigzag order: the position, row by row, of each coefficient in coding order (ISO/IEC 10918-1, figure A.6).
inline constexpr std::array<std::uint8_t, kBlockSize> kCodingOrder = {
    0,  1,  8,  16, 9,  2,  3,  10, 17, 24, 32, 25, 18, 11, 4,  5,  //
    12, 19, 26, 33, 40, 48, 41, 34, 27, 20, 13, 6,  7,  14, 21, 28, //
    35, 42, 49, 56, 57, 50, 43, 36, 29, 22, 15, 23, 30, 37, 44, 51, //
    58, 59, 52, 45, 38, 31, 39, 46, 53, 60, 61, 54, 47, 55, 62, 63,
};

/// Quantised coefficients of one block.
struct alignas(32) QuantisedBlock {
    std::array<std::int8_t, kBlockSize> values; ///< in coding order
    std::uint64_t nonZero;                      ///< bit k is set when values[k] is not zero
    bool saturated;                             ///< true when an AC coefficient is outside -127 to 127
    /// All coefficients row by row; set only when `saturated`. 32-byte aligned for vector stores.
    alignas(32) std::array<std::int16_t, kBlockSize> wide;
};

/// Rounding of quotients to integers. DC coefficients always round to nearest.
enum class Rounding {
    Nearest, ///< as the JPEG library does
    /// Rounds up from nine sixteenths on. Most AC coefficients lie near zero, so the smaller of two integers is
    /// likelier: at the same steps the quality is nearly the same, and pictures with grain are a tenth smaller.
    Sparing,
};

/// Division by the quantisation steps as a multiplication, row by row. The DC step must be at least 8, so that every DC
/// coefficient fits in a byte, and the AC steps 6 to 31.
struct alignas(32) Quantiser {
    Quantiser(const std::array<unsigned int, kBlockSize>& steps, Rounding rounding);

    static constexpr int kShift = 5;            ///< after the upper 16 bits of the product
    std::array<std::uint16_t, kBlockSize> bias; ///< half a step or less
    std::array<std::uint16_t, kBlockSize> reciprocal;
};

/// Transforms and quantises two blocks of 8 by 8 samples whose rows are `stride` bytes apart. Bit-identical to the
/// accurate integer transform of the JPEG library: C. Loeffler, A. Ligtenberg, G. Moschytz, "Practical fast 1-D DCT
/// algorithms with 11 multiplications", ICASSP 1989, with 13 fractional bits, rounded after each direction.
using TransformBlockPair = void (*)(const std::uint8_t* first, const std::uint8_t* second, std::ptrdiff_t stride,
                                    const Quantiser& quantiser, std::array<QuantisedBlock, 2>& blocks);
/// Null when the processor lacks AVX2.
TransformBlockPair avx2TransformBlockPair();

} // namespace lumavex
