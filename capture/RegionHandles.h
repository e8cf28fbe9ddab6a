// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "capture/FrameDimension.h"

#include <cstdint>
#include <vector>

namespace lumavex {

/// Indexes of the region selector's five handles in arrayScreenPointSquare. A handle's point is the lower-left corner
/// of its square, in screen coordinates: device pixels, origin lower left, y upward.
enum HandleIndex : std::int32_t {
    NoHandle = -1,
    LowerLeftHandle = 0,
    LowerRightHandle = 1,
    CentreHandle = 2,
    UpperLeftHandle = 3,
    UpperRightHandle = 4,
};

inline constexpr std::int32_t handleSide = 10; ///< side of a handle's square, in pixels
inline constexpr std::int32_t handleReach = 5; ///< distance from a handle's point to its corner of the region

inline constexpr bool isCorner(std::int32_t handle)
{
    return handle >= LowerLeftHandle && handle <= UpperRightHandle && handle != CentreHandle;
}

/// The five handles of a region of this size at the centre of the screen, in 32-bit integers, truncated toward zero.
std::vector<FrameDimension> centredHandles(const CGSize& size_Region, const CGSize& size_Screen);

/// Adapts the handles when the screen's size changes from `before` to `now`: the region keeps its distance from the top
/// left corner if it then lies inside the screen; otherwise it is moved inside, and reduced if it does not fit.
void moveHandlesInside(std::vector<FrameDimension>& handles, const CGSize& before, const CGSize& now);

/// The first handle whose square contains the location, all four edges included; NoHandle when there is none.
std::int32_t handleAt(const std::vector<FrameDimension>& handles, const CGPoint& location);

/// Moves a corner handle's point to the location. Its two neighbours follow, so that the corners still form a
/// rectangle, and the centre moves to the integer midpoint between the dragged and the opposite corner. The dragged
/// corner may cross the opposite one. `handle` is a corner, `handles` are all five.
void dragHandle(std::vector<FrameDimension>& handles, std::int32_t handle, const CGPoint& location);

/// The region that the handles enclose: from the smallest to the largest coordinates of their points.
CGRect regionOfHandles(const std::vector<FrameDimension>& handles);

} // namespace lumavex
