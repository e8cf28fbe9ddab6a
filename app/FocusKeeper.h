// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointer>
#include <QWidget>

namespace lumavex {

class Window_Main;

/// Lives while a command enables and disables the window's controls. Qt passes the keyboard focus of a control that
/// gets disabled on to whichever comes next, and the next press of the space bar would press that. At the end of its
/// life this object puts the focus where the work goes on (from Record to Pause, from Pause or Stop to Record), or
/// nowhere. Focus on a control that is still enabled stays.
class FocusKeeper final {
public:
    /// `window` must outlive this object.
    explicit FocusKeeper(Window_Main& window);
    ~FocusKeeper();
    FocusKeeper(const FocusKeeper&) = delete;
    FocusKeeper& operator=(const FocusKeeper&) = delete;

private:
    Window_Main& window_;
    QPointer<QWidget> focused_; ///< at the beginning
};

} // namespace lumavex
