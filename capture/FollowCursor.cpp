// SPDX-License-Identifier: GPL-3.0-or-later
#include "capture/FollowCursor.h"

namespace lumavex {

namespace {

double clampedCentre(double position, double keepAway, double extent)
{
    if (keepAway > position)
        return keepAway;
    if (position > extent - keepAway)
        return extent - keepAway;
    return position;
}

} // namespace

CGRect followCursorRect(const CGPoint& mouse, const CGSize& size, const CGSize& screen)
{
    const auto cx = static_cast<float>(clampedCentre(mouse.x, size.width * 0.5, screen.width));
    const auto cy = static_cast<float>(clampedCentre(mouse.y, size.height / 2.2, screen.height));
    const auto w = static_cast<float>(size.width);
    const auto h = static_cast<float>(size.height);
    return {cx - 0.5F * w, cy - 0.5F * h, w, h};
}

} // namespace lumavex
