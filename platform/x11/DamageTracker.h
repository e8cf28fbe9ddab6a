// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/x11/XcbConnection.h"

#include <QRect>

namespace lumavex {

/// Knows whether the root window, its children included, was drawn to. Main thread.
class DamageTracker {
public:
    explicit DamageTracker(const XcbConnection& connection);

    /// True when something inside the rectangle was drawn since the last call, or the server does not tell. Asks in one
    /// round trip; what was drawn before it is forgotten, so pixels must be read after, never before, the call.
    bool changedWithin(const QRect& rect);

    /// What the last changedWithin() found, anywhere on the root; 0 when the server does not tell.
    xcb_xfixes_region_t parts() const { return parts_.id(); }

private:
    const XcbConnection& connection_;
    DamageHandle damage_;
    RegionHandle parts_;
};

} // namespace lumavex
