// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/Message.h"
#include "platform/ScreenGrabber.h"

#include <QObject>
#include <QTimer>

#include <optional>

class QScreen;

namespace lumavex {

class AppDelegate;
class Window_Main;
struct CaptureState;
struct ComposeState;

/// The reason why no part of the region would be visible, as text for the user; empty when some of it is on the main
/// display, or when no region is shown.
QString regionProblem(const CaptureState& capture, const ComposeState& compose);

/// Detects a change of the main display's size: reports it to the user, offers to adopt the new size, and keeps the
/// program's windows within reach. The size measured earlier (CaptureState::size_Screen) applies until the user accepts
/// the new one. Main thread only.
class ScreenSizeWatch final : public QObject {
    Q_OBJECT
public:
    /// All must outlive this object.
    ScreenSizeWatch(AppDelegate& app, ScreenGrabber& screen, Window_Main& window);

    /// Measures the main display (CaptureState::size_Display) and updates the messages about it.
    void look();
    /// Measures the display, shows the message about the region and returns its text, as regionProblem. A region with a
    /// problem must not be recorded.
    QString refusal();
    /// Makes the new size the size_Screen and repeats all choices that depend on it. Not while recording.
    void useItsSize();

private:
    void watch(QScreen* screen);
    void tellSize();
    void tellRegion();
    Message regionMessage(const QString& problem);
    void bringWindowsBack();

    struct Told {
        CGSize size;
        bool offered = false; ///< true when the message offered the new size
        friend bool operator==(const Told&, const Told&) = default;
    };

    AppDelegate& app_;
    ScreenGrabber& screen_;
    Window_Main& window_;
    std::optional<Told> told_; ///< std::nullopt while the screen has the measured size
    QString regionTold_;
    bool mainMoved_ = false; ///< when the display last settled
    QTimer settling_;        ///< runs after the screens changed, or after a window was moved for that reason
};

} // namespace lumavex
