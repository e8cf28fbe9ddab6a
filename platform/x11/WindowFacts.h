// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/x11/XcbConnection.h"

#include <QMargins>
#include <QString>

#include <cstdint>
#include <optional>

namespace lumavex {

/// Layers of WindowDescription, bottom to top; normal windows are 0.
inline constexpr std::int32_t kLayerBackground = -20; ///< the root window
inline constexpr std::int32_t kLayerDesktop = -10;    ///< icons of a file manager
inline constexpr std::int32_t kLayerBelow = -1;
inline constexpr std::int32_t kLayerAbove = 3;
inline constexpr std::int32_t kLayerDock = 20;
inline constexpr std::int32_t kLayerUnmanaged = 25; ///< menus, tooltips and other windows that the window manager does
                                                    ///< not manage

/// Properties by which a window describes itself (ICCCM, EWMH).
struct WindowFacts {
    std::optional<QString> ownerName;
    std::int64_t ownerPid = 0; ///< 0 when unknown
    std::int32_t layer = 0;
    QMargins shadow; ///< transparent margin in which the application draws its shadow
};

/// One request for a window's facts. The constructor sends it, so that many windows are queried in one round trip.
class WindowFactsRequest {
public:
    WindowFactsRequest(const XcbConnection& connection, xcb_window_t window);
    /// Waits for the answer. To be called once. Empty facts when the window is gone.
    WindowFacts answer() const;

private:
    const XcbConnection& connection_;
    xcb_get_property_cookie_t class_;
    xcb_get_property_cookie_t pid_;
    xcb_get_property_cookie_t state_;
    xcb_get_property_cookie_t type_;
    xcb_get_property_cookie_t shadow_;
};

/// The name of the running process; std::nullopt when there is none.
std::optional<QString> nameOfProcess(std::int64_t pid);

} // namespace lumavex
