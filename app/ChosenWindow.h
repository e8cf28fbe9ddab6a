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

/// Where the windows begin in the window menu: the refresh command and a separator stand before them.
inline constexpr int firstWindowItem = 2;

/// The one window that is recorded (CaptureState::sWindowExclusive): how it is grabbed, what stands for it while it is
/// not on the screen, and what the user is told of it. Main thread only.
class ChosenWindow final {
    Q_DECLARE_TR_FUNCTIONS(lumavex::ChosenWindow)
public:
    /// All must outlive this object.
    ChosenWindow(AppDelegate& app, ScreenGrabber& screen, Window_Main& window, MoreSettings& choices);

    /// Grabs it, or what stands for it. It must have been chosen, and the windows to grab with it.
    void grab();
    /// Says in the main window which one was chosen and what becomes of the picture when it goes away.
    void announce();

    /// Whether its last picture stays while it is away; else all other windows are shown.
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
    Grab shot_;      ///< the latest good grab of one window alone; null before the first
    QString shotOf_; ///< the identifier of that window
};

} // namespace lumavex
