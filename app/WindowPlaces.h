// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QRect>

class QWidget;

namespace lumavex {

/// True when a window can be used at its place: at least nine tenths of it lie in the areas, and enough of its title
/// bar lies in one of them for dragging. All in desktop units, downward; `frame` is the window with its title bar and
/// frame.
bool isInReach(const QRect& frame, int titleBarHeight, const QList<QRect>& areas);

/// The nearest place inside the area; a larger window gets the area's upper left corner.
QRect movedInside(const QRect& frame, const QRect& area);

/// The nearest place inside the area, below, beside or above `other`; `frame` itself when there is no room.
QRect movedBeside(const QRect& frame, const QRect& other, const QRect& area);

/// Moves a window that is out of reach into the available part of the screen. `uncovered`, which may be null, is a
/// window not to be covered if there is room. Leaves minimised, maximised and full-screen windows alone. Returns true
/// when the window was moved.
bool bringIntoReach(QWidget& window, const QWidget* uncovered = nullptr);

} // namespace lumavex
