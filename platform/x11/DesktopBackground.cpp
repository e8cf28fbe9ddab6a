// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/x11/DesktopBackground.h"

namespace lumavex {

DesktopBackground::DesktopBackground(const XcbConnection& connection, const RenderFormats& formats)
    : connection_(connection), format_(formats.ofVisual(connection.screen()->root_visual)), damage_(connection)
{
}

void DesktopBackground::note(const xcb_generic_event_t& event)
{
    if ((event.response_type & 0x7f) != XCB_PROPERTY_NOTIFY)
        return;
    const auto& property = reinterpret_cast<const xcb_property_notify_event_t&>(event);
    if (property.window == connection_.root()
        && (property.atom == connection_.atom(Atom::XROOTPMAP_ID)
            || property.atom == connection_.atom(Atom::ESETROOT_PMAP_ID)))
        wallpaperStale_ = true;
}

DesktopBackground::Change DesktopBackground::takeChange(const QRect& area, const QSize& rootSize)
{
    const bool wallpaperWasStale = wallpaperStale_;
    if (wallpaperStale_)
        findWallpaper();
    if (wallpaper_)
        return wallpaperWasStale ? Change::All : Change::None;
    const bool sizeChanged = partsSeenSize_ != rootSize;
    if (sizeChanged)
        preparePartsSeen(rootSize);
    const bool drawn = !damage_.takeChanges(area).isEmpty();
    if (drawn || sizeChanged || wallpaperWasStale) // copied now, before windows cover it
        xcb_copy_area(connection_.get(), connection_.root(), partsSeen_.id(), visibleParts_.id(), 0, 0, 0, 0,
                      static_cast<std::uint16_t>(rootSize.width()), static_cast<std::uint16_t>(rootSize.height()));
    if (sizeChanged || wallpaperWasStale || (drawn && !changedParts()))
        return Change::All;
    return drawn ? Change::Part : Change::None;
}

void DesktopBackground::paint(xcb_render_picture_t canvas, const QRect& area)
{
    xcb_connection_t* const c = connection_.get();
    const xcb_render_picture_t source = wallpaper_ ? wallpaper_.id() : partsSeenPicture_.id();
    xcb_render_composite(c, XCB_RENDER_PICT_OP_SRC, source, XCB_NONE, canvas, static_cast<std::int16_t>(area.x()),
                         static_cast<std::int16_t>(area.y()), 0, 0, 0, 0, static_cast<std::uint16_t>(area.width()),
                         static_cast<std::uint16_t>(area.height()));
}

void DesktopBackground::findWallpaper()
{
    wallpaperStale_ = false;
    wallpaper_ = {};
    xcb_connection_t* const c = connection_.get();
    for (const Atom atom : {Atom::XROOTPMAP_ID, Atom::ESETROOT_PMAP_ID}) {
        const XcbOwned<xcb_get_property_reply_t> property(xcb_get_property_reply(
            c, xcb_get_property(c, 0, connection_.root(), connection_.atom(atom), XCB_ATOM_PIXMAP, 0, 1), nullptr));
        if (!property || property->format != 32 || xcb_get_property_value_length(property.get()) != 4)
            continue;
        const xcb_pixmap_t pixmap = *static_cast<const xcb_pixmap_t*>(xcb_get_property_value(property.get()));
        // The property may outlive the pixmap, and the id may meanwhile name another program's drawable.
        const XcbOwned<xcb_get_geometry_reply_t> geometry(
            xcb_get_geometry_reply(c, xcb_get_geometry(c, pixmap), nullptr));
        if (geometry && geometry->depth == connection_.screen()->root_depth) {
            wallpaper_ = pictureOf(pixmap);
            return;
        }
    }
}

void DesktopBackground::preparePartsSeen(const QSize& rootSize)
{
    xcb_connection_t* const c = connection_.get();
    const auto width = static_cast<std::uint16_t>(rootSize.width());
    const auto height = static_cast<std::uint16_t>(rootSize.height());
    partsSeenPicture_ = {};
    visibleParts_ = {};
    partsSeen_ = {c, connection_.newId()};
    xcb_create_pixmap(c, connection_.screen()->root_depth, partsSeen_.id(), connection_.root(), width, height);
    const std::uint32_t values[] = {connection_.screen()->black_pixel, XCB_SUBWINDOW_MODE_CLIP_BY_CHILDREN, 0};
    visibleParts_ = {c, connection_.newId()};
    xcb_create_gc(c, visibleParts_.id(), connection_.root(),
                  XCB_GC_FOREGROUND | XCB_GC_SUBWINDOW_MODE | XCB_GC_GRAPHICS_EXPOSURES, values);
    const xcb_rectangle_t all{0, 0, width, height};
    xcb_poly_fill_rectangle(c, partsSeen_.id(), visibleParts_.id(), 1, &all);
    partsSeenPicture_ = pictureOf(partsSeen_.id());
    partsSeenSize_ = rootSize;
}

PictureHandle DesktopBackground::pictureOf(xcb_pixmap_t pixmap) const
{
    // A wallpaper smaller than the screen is tiled.
    const std::uint32_t repeat = XCB_RENDER_REPEAT_NORMAL;
    PictureHandle picture(connection_.get(), connection_.newId());
    xcb_render_create_picture(connection_.get(), picture.id(), pixmap, format_.id, XCB_RENDER_CP_REPEAT, &repeat);
    return picture;
}

} // namespace lumavex
