// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/x11/RedirectedWindow.h"

#include <utility>

namespace lumavex {

RedirectedWindow::RedirectedWindow(const XcbConnection& connection, const RenderFormats& formats, const TopLevel& top)
    : connection_(connection), window_(top.window), format_(formats.ofVisual(top.visual))
{
    xcb_connection_t* const c = connection_.get();
    // Automatic: the server continues to show the window on the screen. A compositing manager's own redirection is
    // independent of ours.
    xcb_composite_redirect_window(c, window_, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
    if (connection_.extensions().damage) {
        damage_ = {c, connection_.newId()};
        xcb_damage_create(c, damage_.id(), window_, XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
    }
}

RedirectedWindow::~RedirectedWindow()
{
    xcb_composite_unredirect_window(connection_.get(), window_, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
}

void RedirectedWindow::startNaming()
{
    if (named_)
        return;
    xcb_connection_t* const c = connection_.get();
    picture_.reset();
    pixmap_ = {c, connection_.newId()};
    xcb_composite_name_window_pixmap(c, window_, pixmap_.id());
    geometry_ = xcb_get_geometry(c, pixmap_.id());
}

bool RedirectedWindow::finishNaming()
{
    if (named_)
        return true;
    xcb_connection_t* const c = connection_.get();
    const XcbOwned<xcb_get_geometry_reply_t> geometry(xcb_get_geometry_reply(c, geometry_, nullptr));
    if (!geometry || !format_.id) {
        pixmap_ = {};
        return false;
    }
    // The picture's own size applies: the window may have changed again meanwhile.
    size_ = {geometry->width, geometry->height};
    picture_ = {c, connection_.newId()};
    xcb_render_create_picture(c, picture_.id(), pixmap_.id(), format_.id, 0, nullptr);
    named_ = true;
    damaged_ = Damage::All;
    ++generation_;
    return true;
}

RedirectedWindow::Damage RedirectedWindow::takeDamage(xcb_xfixes_region_t region)
{
    if (!damage_)
        return Damage::All;
    if (damaged_ != Damage::None)
        xcb_damage_subtract(connection_.get(), damage_.id(), XCB_NONE, region);
    return std::exchange(damaged_, Damage::None);
}

} // namespace lumavex
