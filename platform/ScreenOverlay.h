// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPoint>
#include <QRect>
#include <QRegion>
#include <QtGlobal>

#include <functional>
#include <memory>

namespace lumavex {

/// What the pointer's first button did, in device pixels from the upper-left corner of the caught area, y downward.
struct CaughtPointer {
    enum Kind { Press, Move, Release };
    Kind kind = Move;
    QPoint position;
};

/// Takes the pointer's events in an area of the screen, in front of all windows, and shows nothing. The other buttons
/// and the wheel are swallowed. It ends with its destruction.
class PointerCatcher {
public:
    virtual ~PointerCatcher() = default;
    virtual void setCursor(Qt::CursorShape shape) = 0;
};

/// What a see-through window over the whole screen needs of the desktop beyond the toolkit. Main thread only.
class ScreenOverlay {
public:
    using PointerHandler = std::function<void(const CaughtPointer&)>;

    virtual ~ScreenOverlay() = default;

    /// Whether translucent windows are blended with what lies beneath them now. It changes when the user starts or
    /// ends a compositing manager.
    virtual bool blendsTranslucentWindows() = 0;

    /// Cuts the window (a QWidget::winId) down to the given device pixels, counted from its upper-left corner:
    /// elsewhere there is no window, to the eye or to the pointer. A null region makes the window whole again.
    virtual void setShape(quintptr window, const QRegion& devicePixels) = 0;

    /// `area` in device pixels from the upper-left corner of the desktop. The handler must not destroy the catcher.
    virtual std::unique_ptr<PointerCatcher> catchPointer(const QRect& area, PointerHandler handler) = 0;
};

} // namespace lumavex
