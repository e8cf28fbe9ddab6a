// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Geometry.h"

#include <cstdint>
#include <optional>

// Geometry of a composed frame. Pure functions, any thread. Rectangles are upward: origin lower left.
// Sizes and ratios are 32-bit floats and origins are rounded to 32 bits, as each function specifies. Nothing is rounded
// to whole numbers, so that preview and output agree at every size.

namespace lumavex {

/// Number of times a secondary picture of this size code fits across the frame: 8, 4, 3, 2 for 0 to 3, else 1.
int sizeDivisor(std::int64_t sizeCode);

/// The margin to the frame's edges on both axes: a sixtieth of the frame's width.
inline double frameMargin(double frameWidth)
{
    return frameWidth / 60;
}

/// Lower-left corner of a picture of w x h at a position code 0 to 8 (top left, top centre, top right, middle row,
/// bottom row) in a frame of W x H with margin m. Computed in 64 bits, stored in 32. Any other code counts as 8.
CGPoint Return_Position_Origin(std::int64_t positionCode, double W, double H, double m, float w, float h);

/// Rectangle of the screen as the secondary picture.
CGRect screenSecondaryRect(const CGSize& frame, std::int64_t sizeCode, std::int64_t positionCode,
                           const CGSize& size_Screen);

/// Rectangle of the camera as the secondary picture; its shape follows the camera's resolution code (0 to 2 and unknown
/// codes: the frame's own shape).
CGRect cameraSecondaryRect(const CGSize& frame, std::int64_t sizeCode, std::int64_t positionCode,
                           std::int64_t i_Camera_CRP);

/// Rectangle of the overlay; `width` is i_Size_Overlay in the preview frame and ten times that in the output frame.
CGRect overlayRect(const CGSize& frame, std::int64_t width, std::int64_t positionCode, const CGSize& overlay);

/// The stepping fit: the rectangle in which a picture of the given size is drawn in a canvas of the target size. The
/// fitted size is searched in steps of a tenth of the target, so it may fall short of the target or, when enlarged,
/// exceed it by one step; then x or y is negative and the canvas's edges clip the picture. std::nullopt for a picture
/// of zero width (it is used unchanged) and for an empty target.
std::optional<CGRect> Return_Fitted_Rect(const CGSize& picture, const CGSize& target);

} // namespace lumavex
