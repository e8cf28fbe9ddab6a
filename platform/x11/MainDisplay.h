// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/x11/XcbConnection.h"

#include <QRect>

namespace lumavex {

/// Place of the main display on the root window: the primary monitor, or the first one, which is also the primary
/// screen of the program's windows; with an older RandR the primary output, or the one at the root's origin, or the
/// first active one; otherwise the whole root. Main thread.
class MainDisplay {
public:
    explicit MainDisplay(const XcbConnection& connection);

    /// In root coordinates, y downward; inside root(). Empty when the connection is dead.
    const QRect& rect();
    /// The current rectangle of the whole root window.
    const QRect& root();
    /// Handles changes of outputs and of the root's size; true when the event is such a change.
    bool note(const xcb_generic_event_t& event);

private:
    void refresh();
    QRect monitorRect() const;
    QRect outputRect() const;

    const XcbConnection& connection_;
    bool stale_ = true;
    QRect rect_;
    QRect root_;
};

} // namespace lumavex
