// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/x11/XcbConnection.h"

#include <unordered_map>

namespace lumavex {

/// Formats of the server's Render extension for the visuals.
class RenderFormats {
public:
    struct Format {
        xcb_render_pictformat_t id = 0; ///< 0: none
        bool alpha = false;
    };

    explicit RenderFormats(const XcbConnection& connection);

    Format ofVisual(xcb_visualid_t visual) const;
    /// 32 bits: alpha, red, green, blue from the highest byte down, alpha premultiplied.
    Format argb32() const { return argb32_; }

private:
    std::unordered_map<xcb_visualid_t, Format> byVisual_;
    Format argb32_;
};

} // namespace lumavex
