// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "capture/FrameDimension.h"

#include <cstdint>
#include <vector>

namespace lumavex {

/// The five handles of the region selector, as indexes into arrayScreenPointSquare. A handle's point is the lower-left
/// corner of its square, in screen coordinates: device pixels, origin lower left, y upward.
enum HandleIndex : std::int32_t {
    NoHandle = -1,
    LowerLeftHandle = 0,
    LowerRightHandle = 1,
    CentreHandle = 2,
    UpperLeftHandle = 3,
    UpperRightHandle = 4,
};

inline constexpr std::int32_t handleSide = 10; ///< of a handle's square, in pixels
inline constexpr std::int32_t handleReach = 5; ///< from a handle's point to the corner of the region that it stands for

inline constexpr bool isCorner(std::int32_t handle)
{
    return handle >= LowerLeftHandle && handle <= UpperRightHandle && handle != CentreHandle;
}

/// The five handles of a region of this size in the middle of the screen, in 32-bit integers, truncated toward zero.
std::vector<FrameDimension> centredHandles(const CGSize& size_Region, const CGSize& size_Screen);

/// The screen had the size `before` and has the size `now`: the region keeps its distance from the top left corner if
/// it lies inside the screen there; else it is moved inside, and made smaller where it does not fit.
void moveHandlesInside(std::vector<FrameDimension>& handles, const CGSize& before, const CGSize& now);

/// The first handle whose square holds the location, all four edges included; NoHandle when there is none.
std::int32_t handleAt(const std::vector<FrameDimension>& handles, const CGPoint& location);

/// Moves a corner handle's point to the location. Its two neighbours follow, so that the corners stay those of a
/// rectangle, and the centre goes to the integer midpoint between the dragged and the opposite corner. The opposite
/// corner may be passed. `handle` is a corner, `handles` are all five.
void dragHandle(std::vector<FrameDimension>& handles, std::int32_t handle, const CGPoint& location);

/// The region that the handles enclose: from the smallest to the largest coordinates of their points.
CGRect regionOfHandles(const std::vector<FrameDimension>& handles);

} // namespace lumavex
