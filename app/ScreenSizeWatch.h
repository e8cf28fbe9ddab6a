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

/// Why nothing of the region would be seen, in the user's words; empty when some of it is on the main display, or when
/// no region is shown.
QString regionProblem(const CaptureState& capture, const ComposeState& compose);

/// Notices that the main display changes its size: tells the user, offers to measure the screen anew, and keeps the
/// program's windows within reach. What was measured earlier (CaptureState::size_Screen) holds until the user asks for
/// the new size. Main thread only.
class ScreenSizeWatch final : public QObject {
    Q_OBJECT
public:
    /// All must outlive this object.
    ScreenSizeWatch(AppDelegate& app, ScreenGrabber& screen, Window_Main& window);

    /// Measures the main display (CaptureState::size_Display) and brings the messages about it into line.
    void look();
    /// As regionProblem, measured now; the message about it is shown then. Nothing is to be recorded of such a region.
    QString refusal();
    /// The new size becomes size_Screen, and everything that was chosen by it is chosen anew. Not while recording.
    void useItsSize();

private:
    void watch(QScreen* screen);
    void tellSize();
    void tellRegion();
    Message regionMessage(const QString& problem);
    void bringWindowsBack();

    struct Told {
        CGSize size;
        bool offered = false; ///< to use it
        friend bool operator==(const Told&, const Told&) = default;
    };

    AppDelegate& app_;
    ScreenGrabber& screen_;
    Window_Main& window_;
    std::optional<Told> told_; ///< nothing while the screen has the size measured
    QString regionTold_;
    bool mainMoved_ = false; ///< when it last settled
    QTimer settling_;        ///< since the screens changed, or a window was moved because of that
};

} // namespace lumavex
