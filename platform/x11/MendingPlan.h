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
    QRect canvas;                           ///< in root coordinates
};

/// Where the screen shows something else, and what is needed to paint what lies behind it.
struct MendingPlan {
    ChangedArea places;             ///< in the canvas
    std::vector<TopLevel> layers;   ///< front to back
    std::vector<TopLevel> alsoKept; ///< windows that will be needed when others move a little
};

/// `alsoMended`, in root coordinates, shows something else too. Nothing when so much would have to be painted that it
/// is cheaper to paint everything.
std::optional<MendingPlan> planMending(const MendingRequest& request, const QRegion& alsoMended);

/// The rectangle in which a window that is left out may be seen, its shadow included.
QRect reachOf(const TopLevel& top, bool compositing);

} // namespace lumavex
