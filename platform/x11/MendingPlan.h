// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/ChangedArea.h"
#include "platform/x11/WindowTree.h"

#include <QRegion>

#include <optional>
#include <vector>

namespace lumavex {

/// A window of the screen's stack, and its visibility in the picture.
struct StackedWindow {
    TopLevel top;
    bool shown = true;
};

/// A part of the screen without some of its windows.
struct MendingRequest {
    std::vector<StackedWindow> topToBottom; ///< viewable windows
    bool desktop = false;                   ///< the desktop is visible, too
    bool compositing = false;               ///< a compositing manager shows the windows, with its own effects and
                                            ///< timing
    xcb_visualid_t screenVisual = 0;        ///< its windows have the screen's pixels, which are opaque
    QRect canvas;                           ///< in root coordinates
};

/// Places where the screen differs from the requested picture, and the windows to paint there.
struct MendingPlan {
    ChangedArea places;           ///< in the canvas
    std::vector<TopLevel> layers; ///< windows visible in the places, front to back
    bool backdrop = true;         ///< the content behind the layers is visible, too
    bool direct = false;          ///< the single place, of whole rows, shows the single layer unchanged: no painting is
                                  ///< needed
    std::vector<TopLevel> alsoKept; ///< windows that are needed when others move slightly
};

/// `alsoMended`, in root coordinates, also needs mending. std::nullopt when so much needs painting that painting
/// everything is cheaper.
std::optional<MendingPlan> planMending(const MendingRequest& request, const QRegion& alsoMended);

/// The rectangle in which an excluded window may be visible, including its shadow.
QRect reachOf(const TopLevel& top, bool compositing);

} // namespace lumavex
