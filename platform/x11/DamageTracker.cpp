// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/x11/DamageTracker.h"

#include "platform/x11/ServerRegion.h"

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

ChangedArea DamageTracker::takeChanges(const QRect& rect, xcb_xfixes_region_t except)
{
    if (damage_) {
        xcb_damage_subtract(connection_.get(), damage_.id(), XCB_NONE, parts_.id());
        if (except)
            xcb_xfixes_subtract_region(connection_.get(), parts_.id(), except, parts_.id());
        if (const auto area = fetchArea(connection_, parts_.id(), rect))
            return *area;
    }
    return ChangedArea(QRect(QPoint(), rect.size()));
}

} // namespace lumavex
