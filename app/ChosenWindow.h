// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/Message.h"
#include "platform/ScreenGrabber.h"

#include <QCoreApplication>

#include <optional>

namespace lumavex {

class AppDelegate;
class MoreSettings;
class Window_Main;

/// Index of the first window in the window menu: the refresh command and a separator precede it.
inline constexpr int firstWindowItem = 2;

/// The single window that is recorded (CaptureState::sWindowExclusive): grabs it, provides a replacement while it is
/// not on the screen, and reports its state to the user. Main thread only.
class ChosenWindow final {
    Q_DECLARE_TR_FUNCTIONS(lumavex::ChosenWindow)
public:
    /// All must outlive this object.
    ChosenWindow(AppDelegate& app, ScreenGrabber& screen, Window_Main& window, MoreSettings& choices);

    /// Grabs the window, or its replacement. The window must have been chosen, and the list of windows to grab filled.
    void grab();
    /// Reports the chosen window in the main window, and the picture to expect when it goes away.
    void announce();

    /// True when its last picture stays while it is away; otherwise all other windows are shown.
    bool isHeld() const;
    void setHeld(bool held);

private:
    void tellWhetherItIsThere(const QString& identifier, bool present);
    void showState();
    void chooseAnother();
    void dressMenu();
    Message goneMessage(const QString& identifier);
    std::vector<MessageAction> actions();
    QString nameOf(const QString& identifier) const;
    QString consequence() const;

    AppDelegate& app_;
    ScreenGrabber& screen_;
    Window_Main& window_;
    MoreSettings& choices_;
    Grab shot_;      ///< latest good grab of one window alone; null before the first
    QString shotOf_; ///< identifier of that window
};

} // namespace lumavex
