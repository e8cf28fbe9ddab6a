// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/x11/RenderFormats.h"
#include "platform/x11/WindowTree.h"
#include "platform/x11/XcbConnection.h"

#include <QSize>

#include <cstdint>

namespace lumavex {

/// A window that the server draws off the screen too while this exists, so that its whole picture can be read, whatever
/// covers it. Keeps the name of that picture until the window changes its size or is mapped again. Main thread.
class RedirectedWindow {
public:
    /// `formats` outlives this.
    RedirectedWindow(const XcbConnection& connection, const RenderFormats& formats, const TopLevel& top);
    ~RedirectedWindow();
    RedirectedWindow(const RedirectedWindow&) = delete;
    RedirectedWindow& operator=(const RedirectedWindow&) = delete;

    /// Names the picture when that is due. Only sends; finishNaming, called next, waits.
    void startNaming();
    /// False when the window has no picture: it is unmapped or gone.
    bool finishNaming();

    xcb_render_picture_t picture() const { return picture_.id(); }
    xcb_pixmap_t pixmap() const { return pixmap_.id(); }
    bool hasAlpha() const { return format_.alpha; }
    QSize size() const { return size_; } ///< with the border
    /// Changes with every new naming.
    std::uint64_t generation() const { return generation_; }

    enum class Damage { None, Part, All };
    /// What was drawn to since the last call, which is forgotten. For a part, `region` becomes that part, relative to
    /// the window's inside; All also when the server does not tell.
    Damage takeDamage(xcb_xfixes_region_t region);
    void noteDamage()
    {
        if (damaged_ == Damage::None)
            damaged_ = Damage::Part;
    }
    /// The picture's name is out of date.
    void noteReshaped() { named_ = false; }
    xcb_damage_damage_t damage() const { return damage_.id(); }

private:
    const XcbConnection& connection_;
    const xcb_window_t window_;
    const RenderFormats::Format format_;
    DamageHandle damage_;
    PixmapHandle pixmap_;
    PictureHandle picture_;
    QSize size_;
    std::uint64_t generation_ = 0;
    bool named_ = false;
    Damage damaged_ = Damage::All;
    xcb_get_geometry_cookie_t geometry_{};
};

} // namespace lumavex
