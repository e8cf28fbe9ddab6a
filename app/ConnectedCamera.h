// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/options/LaunchOptions.h"
#include "camera/CameraDelegate.h"
#include "platform/Platform.h"

#include <QObject>

namespace lumavex {

class AppDelegate;
class Window_Main;

/// The camera that the settings name: opens it at start and at every OK, adapts source, rate and size of the movie to
/// it, and reports its loss and return. Main thread only.
class ConnectedCamera final : public QObject {
    Q_OBJECT
public:
    /// All must outlive this object.
    ConnectedCamera(AppDelegate& app, Platform& platform, Window_Main& window, const LaunchOptions& options);

    /// Makes the next list() quick. Does not wait.
    void beginListing() { cameraDelegate.beginListing(); }
    /// Fills arrayCameras when it is empty.
    void list();
    /// Opens the camera of the settings, if they name one. Waits until it runs or has failed.
    void start();
    /// Opens it anew, or gives it back when the settings name none, and adapts the controls. Does not wait; a later
    /// failure is reported when it is known.
    void restart();
    /// Frames that arrive from now on get the colours of the state.
    void updateColours() { cameraDelegate.updateColorControls(); }
    /// Why the latest start failed, as text for the user.
    QString trouble() const { return cameraDelegate.trouble(); }

private:
    void connectSignals();
    void reopen();
    void reportFailure(); ///< and continues without a camera
    void drop();
    void adaptControls(); ///< controls, source and rate, to whether a camera is connected
    void showScreenAlone();
    void adoptSize();

    AppDelegate& app_;
    Platform& platform_;
    Window_Main& window_;
    const LaunchOptions options_;
    CameraDelegate cameraDelegate;
};

} // namespace lumavex
