// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointer>
#include <QWidget>

namespace lumavex {

class Window_Main;

/// Exists while a command enables and disables the window's controls. Qt moves the keyboard focus of a control that
/// gets disabled to the next one, which the next press of the space bar would activate. The destructor moves the focus
/// to the next step of the work (from Record to Pause, from Pause or Stop to Record), or clears it. Focus on a control
/// that is still enabled stays.
class FocusKeeper final {
public:
    /// `window` must outlive this object.
    explicit FocusKeeper(Window_Main& window);
    ~FocusKeeper();
    FocusKeeper(const FocusKeeper&) = delete;
    FocusKeeper& operator=(const FocusKeeper&) = delete;

private:
    Window_Main& window_;
    QPointer<QWidget> focused_; ///< focused control at construction
};

} // namespace lumavex
