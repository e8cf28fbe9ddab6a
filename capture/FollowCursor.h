// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Geometry.h"

namespace lumavex {

/// The rectangle of `size` around the mouse, in screen coordinates. It stays inside the screen horizontally; at the
/// lower and upper edge it extends beyond by h x (1/2 - 1/2.2), so that the cursor does not stick to the frame's edge
/// there. Computed in 32-bit floating point.
CGRect followCursorRect(const CGPoint& mouse, const CGSize& size, const CGSize& screen);

} // namespace lumavex
