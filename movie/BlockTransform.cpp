// SPDX-License-Identifier: GPL-3.0-or-later
#include "movie/BlockTransform.h"

#include <stdexcept>

namespace lumavex {

namespace {

// The transform's results are eight times too large.
constexpr unsigned int kScale = 8;
// Of a coefficient, so scaled, of samples that are 128 from the middle at most; with what rounding may add.
constexpr unsigned int kLargest = kScale * 1024 + 8;

// Whether the product with the reciprocal is the quotient for every coefficient there can be.
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
            throw std::invalid_argument("a quantisation step that cannot be divided by");
    }
}

} // namespace lumavex
