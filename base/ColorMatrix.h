// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>

namespace lumavex {

/// The colour controls as one matrix for red, green and blue with fixed-point coefficients in 4096ths.
///
/// With saturation s, brightness b and contrast k (each a tenth of its control) and the Rec. 709 luma Y,
///   v = Y + s (c - Y) + 255 b          saturation about the luma, brightness added
///   c' = 127.5 + k (v - 127.5)         contrast about mid grey
/// rounded to nearest and clamped to 0 to 255; c ranges from 0 to 255. Per channel this is
///   c' = k s c + k (1 - s) Y + 127.5 (1 - k) + 255 k b,
/// whose coefficients for neutral values are exactly 1, 0 and 0. The coefficient of Y is the same for all three
/// channels, so grey stays grey. s, b and k are clamped to -16 to 16; NaN counts as 0.
class ColorMatrix {
public:
    /// Each argument is ten times its value: 10, 0, 10 are neutral.
    ColorMatrix(float saturation, float brightness, float contrast);

    /// True when no pixel changes.
    bool isNeutral() const;
    /// Changes pixels 0xAARRGGBB in place; alpha is unchanged. Any thread.
    void apply(std::uint32_t* pixels, std::size_t count) const;

    friend bool operator==(const ColorMatrix&, const ColorMatrix&) = default;

    static constexpr int bits = 12;

    int own = 0; ///< coefficient of the channel itself
    int lumaRed = 0;
    int lumaGreen = 0;
    int lumaBlue = 0;
    int constant = 0; ///< includes one half for rounding
};

} // namespace lumavex
