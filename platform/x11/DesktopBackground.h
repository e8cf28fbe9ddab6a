// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/x11/DamageTracker.h"
#include "platform/x11/RenderFormats.h"
#include "platform/x11/XcbConnection.h"

#include <QRect>
#include <QSize>

namespace lumavex {

/// The desktop behind all windows. The root window does not keep the pixels that windows cover, so this uses the pixmap
/// that the wallpaper program published (_XROOTPMAP_ID, ESETROOT_PMAP_ID); without one, the parts of the root window
/// that were visible during this object's life, and black elsewhere. Main thread.
class DesktopBackground {
public:
    DesktopBackground(const XcbConnection& connection, const RenderFormats& formats);

    enum class Change { None, Part, All };
    /// Extent to which the output of paint() may differ from the last time; Part refers to changedParts(). `area` is in
    /// root coordinates.
    Change takeChange(const QRect& area, const QSize& rootSize);
    xcb_xfixes_region_t changedParts() const { return damage_.parts(); } ///< in root coordinates
    /// Paints `area` of the desktop at the picture's upper-left corner.
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
    PictureHandle wallpaper_; ///< none: no wallpaper program published one
    PixmapHandle partsSeen_;
    GcHandle visibleParts_; ///< copies the uncovered parts
    PictureHandle partsSeenPicture_;
    QSize partsSeenSize_;
};

} // namespace lumavex
