// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/ColorMatrix.h"

#include <algorithm>
#include <cmath>

namespace lumavex {
namespace {

constexpr double kOne = 1 << ColorMatrix::bits;
/// Beyond this limit every pixel is clamped anyway; within it every sum fits in 32 bits.
constexpr double kLargest = 16;

double limited(float value)
{
    return std::isnan(value) ? 0 : std::clamp(double(value), -kLargest, kLargest);
}

int whole(double value)
{
    return int(std::lround(value * kOne));
}

/// Free of branches and in 32-bit lanes, so that compilers vectorise it with the widest instructions allowed.
[[gnu::always_inline]] inline void applyRow(const ColorMatrix& m, std::uint32_t* pixels, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t pixel = pixels[i];
        const int red = int(pixel >> 16 & 255U);
        const int green = int(pixel >> 8 & 255U);
        const int blue = int(pixel & 255U);
        const int shared = m.lumaRed * red + m.lumaGreen * green + m.lumaBlue * blue + m.constant;
        const int newRed = std::clamp((m.own * red + shared) >> ColorMatrix::bits, 0, 255);
        const int newGreen = std::clamp((m.own * green + shared) >> ColorMatrix::bits, 0, 255);
        const int newBlue = std::clamp((m.own * blue + shared) >> ColorMatrix::bits, 0, 255);
        pixels[i] =
            (pixel & 0xFF000000U) | std::uint32_t(newRed) << 16 | std::uint32_t(newGreen) << 8 | std::uint32_t(newBlue);
    }
}

using RowFunction = void (*)(const ColorMatrix&, std::uint32_t*, std::size_t);

void applyRowPlain(const ColorMatrix& matrix, std::uint32_t* pixels, std::size_t count)
{
    applyRow(matrix, pixels, count);
}

// Only this function may use AVX2, so that the program also starts on processors without it.
#if defined(__x86_64__)
[[gnu::target("avx2"), gnu::optimize("O3")]] void applyRowAvx2(const ColorMatrix& matrix, std::uint32_t* pixels,
                                                               std::size_t count)
{
    applyRow(matrix, pixels, count);
}

RowFunction rowFunction()
{
    return __builtin_cpu_supports("avx2") ? applyRowAvx2 : applyRowPlain;
}
#else
RowFunction rowFunction()
{
    return applyRowPlain;
}
#endif

} // namespace

ColorMatrix::ColorMatrix(float saturation, float brightness, float contrast)
{
    const double s = limited(saturation / 10);
    const double b = limited(brightness / 10);
    const double k = limited(contrast / 10);
    own = whole(k * s);
    lumaRed = whole(k * (1 - s) * 0.2126);
    lumaBlue = whole(k * (1 - s) * 0.0722);
    lumaGreen = whole(k * (1 - s)) - lumaRed - lumaBlue;
    constant = whole(127.5 * (1 - k) + 255 * k * b) + (1 << (bits - 1));
}

bool ColorMatrix::isNeutral() const
{
    static const ColorMatrix neutral(10, 0, 10);
    return *this == neutral;
}

void ColorMatrix::apply(std::uint32_t* pixels, std::size_t count) const
{
    static const RowFunction function = rowFunction();
    function(*this, pixels, count);
}

} // namespace lumavex
