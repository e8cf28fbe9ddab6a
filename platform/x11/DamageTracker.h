// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/ChangedArea.h"
#include "platform/x11/XcbConnection.h"

#include <QRect>

namespace lumavex {

/// Tracks drawing on the root window, including its children. Main thread.
class DamageTracker {
public:
    explicit DamageTracker(const XcbConnection& connection);

    /// The area inside the rectangle that was drawn to since the last call, relative to its corner; the whole rectangle
    /// when the server does not report damage. Excludes the region `except`, if given. Takes one round trip; earlier
    /// damage is forgotten, so pixels must be read after the call, never before it.
    ChangedArea takeChanges(const QRect& rect, xcb_xfixes_region_t except = XCB_NONE);

    /// The result of the last takeChanges() for the whole root window; 0 when the server does not report damage.
    xcb_xfixes_region_t parts() const { return parts_.id(); }

private:
    const XcbConnection& connection_;
    DamageHandle damage_;
    RegionHandle parts_;
};

} // namespace lumavex
