// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/ChangedArea.h"
#include "platform/x11/XcbConnection.h"

#include <QRect>

namespace lumavex {

/// Knows where the root window, its children included, was drawn to. Main thread.
class DamageTracker {
public:
    explicit DamageTracker(const XcbConnection& connection);

    /// Where inside the rectangle something was drawn since the last call, relative to its corner; all of it when the
    /// server does not tell. What lies in the region `except`, if there is one, is left out. Asks in one round trip;
    /// what was drawn before it is forgotten, so pixels must be read after, never before, the call.
    ChangedArea takeChanges(const QRect& rect, xcb_xfixes_region_t except = XCB_NONE);

    /// What the last takeChanges() found, anywhere on the root; 0 when the server does not tell.
    xcb_xfixes_region_t parts() const { return parts_.id(); }

private:
    const XcbConnection& connection_;
    DamageHandle damage_;
    RegionHandle parts_;
};

} // namespace lumavex
