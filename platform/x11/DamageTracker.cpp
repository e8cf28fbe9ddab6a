// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/x11/DamageTracker.h"

#include <algorithm>

namespace lumavex {

DamageTracker::DamageTracker(const XcbConnection& connection) : connection_(connection)
{
    if (!connection_.extensions().damage)
        return;
    xcb_connection_t* const c = connection_.get();
    damage_ = {c, connection_.newId()};
    xcb_damage_create(c, damage_.id(), connection_.root(), XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
    parts_ = {c, connection_.newId()};
    xcb_xfixes_create_region(c, parts_.id(), 0, nullptr);
}

bool DamageTracker::changedWithin(const QRect& rect)
{
    if (!damage_)
        return true;
    xcb_connection_t* const c = connection_.get();
    xcb_damage_subtract(c, damage_.id(), XCB_NONE, parts_.id());
    const XcbOwned<xcb_xfixes_fetch_region_reply_t> region(
        xcb_xfixes_fetch_region_reply(c, xcb_xfixes_fetch_region(c, parts_.id()), nullptr));
    if (!region)
        return true;
    const xcb_rectangle_t* const first = xcb_xfixes_fetch_region_rectangles(region.get());
    return std::any_of(
        first, first + xcb_xfixes_fetch_region_rectangles_length(region.get()),
        [&](const xcb_rectangle_t& part) { return rect.intersects(QRect(part.x, part.y, part.width, part.height)); });
}

} // namespace lumavex
