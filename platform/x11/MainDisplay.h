// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/x11/XcbConnection.h"

#include <QRect>

namespace lumavex {

/// Where the main display lies on the root window: the primary monitor, else the first one, which is the primary screen
/// of the program's windows too; with an older RandR the primary output, else the one at the root's origin, else the
/// first that is on; else the whole root. Main thread.
class MainDisplay {
public:
    explicit MainDisplay(const XcbConnection& connection);

    /// In root coordinates, y downward; inside root(). Empty when the connection is dead.
    const QRect& rect();
    /// The whole root window as it is now.
    const QRect& root();
    /// Takes notice of changes of outputs and of the root's size; true when this is one.
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
