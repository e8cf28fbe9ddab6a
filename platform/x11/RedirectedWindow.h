// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/x11/RenderFormats.h"
#include "platform/x11/WindowTree.h"
#include "platform/x11/XcbConnection.h"

#include <QSize>

#include <cstdint>

namespace lumavex {

/// A window that the server also draws off-screen while this object exists, so that its whole picture can be read even
/// when it is covered. Keeps the name of that picture until the window is resized or mapped again. Main thread.
class RedirectedWindow {
public:
    /// `formats` must outlive this object.
    RedirectedWindow(const XcbConnection& connection, const RenderFormats& formats, const TopLevel& top);
    ~RedirectedWindow();
    RedirectedWindow(const RedirectedWindow&) = delete;
    RedirectedWindow& operator=(const RedirectedWindow&) = delete;

    /// Names the picture if necessary. Only sends; finishNaming must be called next and waits.
    void startNaming();
    /// False when the window has no picture: it is unmapped or gone.
    bool finishNaming();

    xcb_render_picture_t picture() const { return picture_.id(); }
    xcb_pixmap_t pixmap() const { return pixmap_.id(); }
    bool hasAlpha() const { return format_.alpha; }
    QSize size() const { return size_; } ///< including the border
    /// Changes with every new naming.
    std::uint64_t generation() const { return generation_; }

    enum class Damage { None, Part, All };
    /// Fetches and clears the damage since the last call. For Part, `region` becomes that part, relative to the
    /// window's inside; All also when the server does not report damage.
    Damage takeDamage(xcb_xfixes_region_t region);
    void noteDamage()
    {
        if (damaged_ == Damage::None)
            damaged_ = Damage::Part;
    }
    /// Marks the picture's name as outdated.
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
