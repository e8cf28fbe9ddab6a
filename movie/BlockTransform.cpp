// SPDX-License-Identifier: GPL-3.0-or-later
#include "movie/BlockTransform.h"

#include <stdexcept>

namespace lumavex {

namespace {

// The transform scales its results by eight.
constexpr unsigned int kScale = 8;
// Largest scaled coefficient of samples at most 128 from the middle, with a margin for rounding.
constexpr unsigned int kLargest = kScale * 1024 + 8;

// True when multiplying by the reciprocal gives the exact quotient for every possible coefficient.
bool isExact(unsigned int divisor, unsigned int bias, unsigned int reciprocal)
{
    for (unsigned int value = 0; value <= kLargest; ++value) {
        if ((value + bias) * reciprocal >> (16 + Quantiser::kShift) != (value + bias) / divisor)
            return false;
    }
    return true;
}

} // namespace

Quantiser::Quantiser(const std::array<unsigned int, kBlockSize>& steps, Rounding rounding)
{
    for (std::size_t k = 0; k < kBlockSize; ++k) {
        const unsigned int divisor = steps[k] * kScale;
        const unsigned int inverse = divisor == 0 ? 0 : ((1U << (16 + kShift)) + divisor - 1) / divisor;
        bias[k] = static_cast<std::uint16_t>(rounding == Rounding::Nearest || k == 0 ? divisor / 2 : divisor * 7 / 16);
        reciprocal[k] = static_cast<std::uint16_t>(inverse);
        if (inverse == 0 || inverse > 0xFFFF || !isExact(divisor, bias[k], inverse))
            throw std::invalid_argument("unsupported quantisation step");
    }
}

} // namespace lumavex
