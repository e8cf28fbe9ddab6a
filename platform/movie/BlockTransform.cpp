// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/movie/BlockTransform.h"

#include <stdexcept>

namespace lumavex {

namespace {

// The transform's results are eight times too large.
constexpr unsigned int kScale = 8;
// Of a coefficient that is not the mean, scaled, rounded: 8 times 128 times the root of the greatest gain.
constexpr unsigned int kLargest = 1 << 13;

// Whether the product with the reciprocal is the quotient, rounded to the nearest, for every coefficient there can be.
bool isExact(unsigned int divisor, unsigned int half, unsigned int reciprocal)
{
    for (unsigned int value = 0; value <= kLargest; ++value) {
        if ((value + half) * reciprocal >> (16 + Quantiser::kShift) != (value + half) / divisor)
            return false;
    }
    return true;
}

} // namespace

Quantiser::Quantiser(const std::array<unsigned int, kBlockSize>& steps)
{
    for (std::size_t k = 0; k < kBlockSize; ++k) {
        const unsigned int divisor = steps[k] * kScale;
        const unsigned int inverse = divisor == 0 ? 0 : ((1U << (16 + kShift)) + divisor - 1) / divisor;
        half[k] = static_cast<std::uint16_t>(divisor / 2);
        reciprocal[k] = static_cast<std::uint16_t>(inverse);
        if (inverse == 0 || inverse > 0xFFFF || !isExact(divisor, half[k], inverse))
            throw std::invalid_argument("a quantisation step that cannot be divided by");
    }
}

} // namespace lumavex
