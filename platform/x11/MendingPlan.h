// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/ChangedArea.h"
#include "platform/x11/WindowTree.h"

#include <QRegion>

#include <optional>
#include <vector>

namespace lumavex {

/// A window of the screen's stack, and whether it is to be seen.
struct StackedWindow {
    TopLevel top;
    bool shown = true;
};

/// A part of the screen as it would look without some of its windows.
struct MendingRequest {
    std::vector<StackedWindow> topToBottom; ///< viewable windows
    bool desktop = false;                   ///< is to be seen too
    bool compositing = false;               ///< a compositing manager shows the windows, in its own way and time
    xcb_visualid_t screenVisual = 0;        ///< windows of it have the screen's pixels, which are opaque
    QRect canvas;                           ///< in root coordinates
};

/// Where the screen shows something else, and what is needed to paint what lies behind it.
struct MendingPlan {
    ChangedArea places;           ///< in the canvas
    std::vector<TopLevel> layers; ///< front to back, those that are seen in the places
    bool backdrop = true;         ///< what lies behind the layers is seen too
    bool direct = false;          ///< the one place, whole rows, shows the one layer as it is: nothing is to be painted
    std::vector<TopLevel> alsoKept; ///< windows that will be needed when others move a little
};

/// `alsoMended`, in root coordinates, shows something else too. Nothing when so much would have to be painted that it
/// is cheaper to paint everything.
std::optional<MendingPlan> planMending(const MendingRequest& request, const QRegion& alsoMended);

/// The rectangle in which a window that is left out may be seen, its shadow included.
QRect reachOf(const TopLevel& top, bool compositing);

} // namespace lumavex
