// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/x11/MainDisplay.h"

#include <xcb/randr.h>

#include <vector>

namespace lumavex {

namespace {

QRect rectOf(const xcb_randr_get_crtc_info_reply_t& crtc)
{
    return {crtc.x, crtc.y, crtc.width, crtc.height};
}

} // namespace

MainDisplay::MainDisplay(const XcbConnection& connection) : connection_(connection)
{
    // WindowTree selects the root's own ConfigureNotify together with all other root events.
    if (connection_.extensions().randr) {
        xcb_randr_select_input(connection_.get(), connection_.root(),
                               XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE
                                   | XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE);
    }
}

const QRect& MainDisplay::rect()
{
    if (stale_)
        refresh();
    return rect_;
}

const QRect& MainDisplay::root()
{
    if (stale_)
        refresh();
    return root_;
}

bool MainDisplay::note(const xcb_generic_event_t& event)
{
    const int type = event.response_type & 0x7f;
    const std::uint8_t randr = connection_.extensions().randrEvent;
    const bool resized = type == XCB_CONFIGURE_NOTIFY
                         && reinterpret_cast<const xcb_configure_notify_event_t&>(event).window == connection_.root();
    const bool rearranged = connection_.extensions().randr
                            && (type == randr + XCB_RANDR_SCREEN_CHANGE_NOTIFY || type == randr + XCB_RANDR_NOTIFY);
    stale_ = stale_ || resized || rearranged;
    return resized || rearranged;
}

void MainDisplay::refresh()
{
    xcb_connection_t* const c = connection_.get();
    const auto geometryCookie = xcb_get_geometry(c, connection_.root());
    QRect output;
    if (connection_.extensions().randrMonitors)
        output = monitorRect();
    else if (connection_.extensions().randr)
        output = outputRect();
    const XcbOwned<xcb_get_geometry_reply_t> geometry(xcb_get_geometry_reply(c, geometryCookie, nullptr));
    root_ = geometry ? QRect(0, 0, geometry->width, geometry->height) : QRect();
    const QRect visible = output & root_;
    rect_ = visible.isEmpty() ? root_ : visible;
    stale_ = !connection_.alive();
}

QRect MainDisplay::monitorRect() const
{
    xcb_connection_t* const c = connection_.get();
    const XcbOwned<xcb_randr_get_monitors_reply_t> monitors(
        xcb_randr_get_monitors_reply(c, xcb_randr_get_monitors(c, connection_.root(), 1), nullptr));
    if (!monitors)
        return {};
    QRect found;
    for (auto it = xcb_randr_get_monitors_monitors_iterator(monitors.get()); it.rem; xcb_randr_monitor_info_next(&it)) {
        if (found.isEmpty() || it.data->primary)
            found = {it.data->x, it.data->y, it.data->width, it.data->height};
        if (it.data->primary)
            break;
    }
    return found;
}

QRect MainDisplay::outputRect() const
{
    xcb_connection_t* const c = connection_.get();
    const auto primaryCookie = xcb_randr_get_output_primary(c, connection_.root());
    const auto resourcesCookie = xcb_randr_get_screen_resources_current(c, connection_.root());
    const XcbOwned<xcb_randr_get_output_primary_reply_t> primary(
        xcb_randr_get_output_primary_reply(c, primaryCookie, nullptr));
    const XcbOwned<xcb_randr_get_screen_resources_current_reply_t> resources(
        xcb_randr_get_screen_resources_current_reply(c, resourcesCookie, nullptr));
    if (!resources)
        return {};

    xcb_randr_crtc_t primaryCrtc = XCB_NONE;
    if (primary && primary->output != XCB_NONE) {
        const XcbOwned<xcb_randr_get_output_info_reply_t> output(xcb_randr_get_output_info_reply(
            c, xcb_randr_get_output_info(c, primary->output, resources->config_timestamp), nullptr));
        primaryCrtc = output ? output->crtc : xcb_randr_crtc_t{XCB_NONE};
    }
    const xcb_randr_crtc_t* const crtcs = xcb_randr_get_screen_resources_current_crtcs(resources.get());
    std::vector<xcb_randr_get_crtc_info_cookie_t> cookies;
    for (int i = 0; i < resources->num_crtcs; ++i)
        cookies.push_back(xcb_randr_get_crtc_info(c, crtcs[i], resources->config_timestamp));

    enum { First, AtOrigin, Primary } best = First;
    QRect found;
    for (std::size_t i = 0; i < cookies.size(); ++i) {
        const XcbOwned<xcb_randr_get_crtc_info_reply_t> crtc(xcb_randr_get_crtc_info_reply(c, cookies[i], nullptr));
        if (!crtc || crtc->mode == XCB_NONE || crtc->num_outputs == 0)
            continue;
        const QRect rect = rectOf(*crtc);
        const auto rank = crtcs[i] == primaryCrtc ? Primary : rect.topLeft().isNull() ? AtOrigin : First;
        if (found.isEmpty() || rank > best) {
            found = rect;
            best = rank;
        }
    }
    return found;
}

} // namespace lumavex
