// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QRect>

class QWidget;

namespace lumavex {

/// Whether a window can be used where it stands: nine tenths of it or more lie in the areas, and so much of its title
/// bar in one of them that it can be dragged. All in desktop units, downward; `frame` is the window with its title bar
/// and frame.
bool isInReach(const QRect& frame, int titleBarHeight, const QList<QRect>& areas);

/// The nearest place inside the area; where the window is larger, its upper left corner is there.
QRect movedInside(const QRect& frame, const QRect& area);

/// The nearest place inside the area, below, beside or above `other`; `frame` itself where there is no room.
QRect movedBeside(const QRect& frame, const QRect& other, const QRect& area);

/// Moves a window that is out of reach into the available part of the screen. `uncovered` may be null: a window of
/// which nothing is to be covered, if there is room. Minimised, maximised and full-screen windows are left alone.
/// Whether it was moved.
bool bringIntoReach(QWidget& window, const QWidget* uncovered = nullptr);

} // namespace lumavex
