// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/x11/DamageTracker.h"
#include "platform/x11/RenderFormats.h"
#include "platform/x11/XcbConnection.h"

#include <QRect>
#include <QSize>

namespace lumavex {

/// The desktop as it lies behind all windows. The root window keeps no such picture where windows cover it, so it is
/// the picture that the wallpaper's setter left for others (_XROOTPMAP_ID, ESETROOT_PMAP_ID); without one it is what
/// has been visible of the root window since this exists, and black elsewhere. Main thread.
class DesktopBackground {
public:
    DesktopBackground(const XcbConnection& connection, const RenderFormats& formats);

    enum class Change { None, Part, All };
    /// How much of what paint() paints may differ from last time; Part is changedParts(). `area` in root coordinates.
    Change takeChange(const QRect& area, const QSize& rootSize);
    xcb_xfixes_region_t changedParts() const { return damage_.parts(); } ///< in root coordinates
    /// Paints `area` of the desktop into the picture's upper-left corner.
    void paint(xcb_render_picture_t canvas, const QRect& area);
    void note(const xcb_generic_event_t& event);

private:
    void findWallpaper();
    void preparePartsSeen(const QSize& rootSize);
    PictureHandle pictureOf(xcb_pixmap_t pixmap) const;

    const XcbConnection& connection_;
    const RenderFormats::Format format_;
    DamageTracker damage_;
    bool wallpaperStale_ = true;
    PictureHandle wallpaper_; ///< none: no setter left one
    PixmapHandle partsSeen_;
    GcHandle visibleParts_; ///< copies what no window covers
    PictureHandle partsSeenPicture_;
    QSize partsSeenSize_;
};

} // namespace lumavex
