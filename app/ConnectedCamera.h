// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/options/LaunchOptions.h"
#include "camera/CameraDelegate.h"
#include "platform/Platform.h"

#include <QObject>

namespace lumavex {

class AppDelegate;
class Window_Main;

/// The camera that the settings name: opens it at start and at every OK, adjusts the movie's source, rate and size to
/// it, and reports its loss and return. Main thread only.
class ConnectedCamera final : public QObject {
    Q_OBJECT
public:
    /// All must outlive this object.
    ConnectedCamera(AppDelegate& app, Platform& platform, Window_Main& window, const LaunchOptions& options);

    /// Prepares the next list() so that it returns quickly. Does not wait.
    void beginListing() { cameraDelegate.beginListing(); }
    /// Fills arrayCameras when it is empty.
    void list();
    /// Opens the camera that the settings name, if any. Waits until it runs or has failed.
    void start();
    /// Reopens the camera, or releases it when the settings name none, and updates the controls. Does not wait; reports
    /// a later failure when it occurs.
    void restart();
    /// Applies the state's colour controls to all later frames.
    void updateColours() { cameraDelegate.updateColorControls(); }
    /// The reason why the latest start failed, as text for the user.
    QString trouble() const { return cameraDelegate.trouble(); }

private:
    void connectSignals();
    void reopen();
    void reportFailure(); ///< and continues without a camera
    void drop();
    void adaptControls(); ///< adapts controls, source and rate to the presence of a camera
    void showScreenAlone();
    void adoptSize();

    AppDelegate& app_;
    Platform& platform_;
    Window_Main& window_;
    const LaunchOptions options_;
    CameraDelegate cameraDelegate;
};

} // namespace lumavex
