// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPoint>
#include <QRect>
#include <QRegion>
#include <QtGlobal>

#include <functional>
#include <memory>

namespace lumavex {

/// An action of the pointer's first button, in device pixels from the upper-left corner of the caught area, y downward.
struct CaughtPointer {
    enum Kind { Press, Move, Release };
    Kind kind = Move;
    QPoint position;
};

/// Receives the pointer's events in an area of the screen, in front of all windows, and shows nothing. Discards those
/// of other buttons and of the wheel. Ends with its destruction.
class PointerCatcher {
public:
    virtual ~PointerCatcher() = default;
    virtual void setCursor(Qt::CursorShape shape) = 0;
};

/// Functions of the desktop that a transparent window over the whole screen needs beyond the toolkit. Main thread only.
class ScreenOverlay {
public:
    using PointerHandler = std::function<void(const CaughtPointer&)>;

    virtual ~ScreenOverlay() = default;

    /// True when translucent windows are currently blended with the windows beneath. Changes when the user starts or
    /// ends a compositing manager.
    virtual bool blendsTranslucentWindows() = 0;

    /// Restricts the window (a QWidget::winId) to the given device pixels, counted from its upper-left corner:
    /// elsewhere it is neither visible nor receives the pointer. A null region makes the window whole again.
    virtual void setShape(quintptr window, const QRegion& devicePixels) = 0;

    /// `area` in device pixels from the upper-left corner of the desktop. The handler must not destroy the catcher.
    virtual std::unique_ptr<PointerCatcher> catchPointer(const QRect& area, PointerHandler handler) = 0;
};

} // namespace lumavex
