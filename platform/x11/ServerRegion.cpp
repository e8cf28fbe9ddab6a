// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/x11/ServerRegion.h"

namespace lumavex {

namespace {

/// With more rectangles than this, choosing the ones to join takes longer than reading the pixels between them.
constexpr int kMostRectangles = 256;

QRect rectOf(const xcb_rectangle_t& rect)
{
    return {rect.x, rect.y, rect.width, rect.height};
}

} // namespace

std::optional<ChangedArea> fetchArea(const XcbConnection& connection, xcb_xfixes_region_t region, const QRect& within)
{
    xcb_connection_t* const c = connection.get();
    const XcbOwned<xcb_xfixes_fetch_region_reply_t> reply(
        xcb_xfixes_fetch_region_reply(c, xcb_xfixes_fetch_region(c, region), nullptr));
    if (!reply)
        return std::nullopt;
    ChangedArea area;
    const auto add = [&](const xcb_rectangle_t& rect) {
        area.add((rectOf(rect) & within).translated(-within.topLeft()));
    };
    const int count = xcb_xfixes_fetch_region_rectangles_length(reply.get());
    const xcb_rectangle_t* const first = xcb_xfixes_fetch_region_rectangles(reply.get());
    if (count > kMostRectangles) {
        add(reply->extents);
    } else {
        for (int i = 0; i < count; ++i)
            add(first[i]);
    }
    return area;
}

} // namespace lumavex
