// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>

namespace lumavex {

/// The colour controls as one matrix over red, green and blue with whole coefficients, of 4096 parts.
///
/// With s, b and k the saturation, brightness and contrast (each a tenth of its control) and Y the Rec. 709 luma,
///   v = Y + s (c - Y) + 255 b          saturation about the luma, brightness added
///   c' = 127.5 + k (v - 127.5)         contrast about mid grey
/// rounded to the nearest and limited to 0 to 255, c being 0 to 255. Per channel that is
///   c' = k s c + k (1 - s) Y + 127.5 (1 - k) + 255 k b,
/// whose coefficients for neutral values are exactly 1, 0 and 0. The share of Y is the same for all three channels, so
/// grey stays grey. Values past -16 and 16 count as those, what is not a number as 0.
class ColorMatrix {
public:
    /// Each ten times its value: 10, 0, 10 are neutral.
    ColorMatrix(float saturation, float brightness, float contrast);

    /// Whether no pixel changes.
    bool isNeutral() const;
    /// Changes pixels 0xAARRGGBB in place; the alpha stays. Any thread.
    void apply(std::uint32_t* pixels, std::size_t count) const;

    friend bool operator==(const ColorMatrix&, const ColorMatrix&) = default;

    static constexpr int bits = 12;

    int own = 0; ///< of the channel itself
    int lumaRed = 0;
    int lumaGreen = 0;
    int lumaBlue = 0;
    int constant = 0; ///< holds the half that rounds
};

} // namespace lumavex
