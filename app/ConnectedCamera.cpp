// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ConnectedCamera.h"

#include "app/AppDelegate.h"
#include "app/Window_Main.h"
#include "app/awaitCameras.h"

namespace lumavex {

ConnectedCamera::ConnectedCamera(AppDelegate& app, Platform& platform, Window_Main& window,
                                 const LaunchOptions& options)
    : app_(app), platform_(platform), window_(window), options_(options), cameraDelegate(*platform.cameras, app.camera)
{
    connectSignals();
}

void ConnectedCamera::list()
{
    if (app_.camera.arrayCameras.isEmpty())
        app_.camera.arrayCameras = cameraDelegate.enumCameras();
}

void ConnectedCamera::start()
{
    // The list of cameras is not needed when no camera is to run (see showMainWindow).
    if (app_.camera.s_Camera_Name == doNotConnectToCamera)
        return;
    if (options_.isUnattended()) {
        if (!app_.compose.showsCamera())
            return; // an unattended run has no user to show it later
        app_.camera.arrayCameras =
            awaitCameras(*platform_.cameras, *platform_.runLoop,
                         [this](const QStringList& names) { return names.contains(app_.camera.s_Camera_Name); });
    } else {
        app_.camera.arrayCameras = cameraDelegate.enumCameras();
    }
    app_.camera.b_Camera_Connected = cameraDelegate.startCamera(app_.camera.s_Camera_Name);
    if (!app_.camera.b_Camera_Connected)
        reportFailure();
}

void ConnectedCamera::restart()
{
    reopen();
    adaptControls();
}

void ConnectedCamera::reopen()
{
    app_.camera.b_Camera_Connected = false;
    app_.camera.b_Camera_Gone = false;
    window_.withdrawMessage(MessageTopic::Camera); // about the previous camera
    if (app_.camera.s_Camera_Name == doNotConnectToCamera) {
        cameraDelegate.stopCamera();
        drop();
        return;
    }
    const std::optional<CameraRequest> before = cameraDelegate.cameraInput();
    // Releasing and reopening a camera takes up to seconds. Does not wait; the last picture stays.
    app_.camera.b_Camera_Connected = cameraDelegate.startCameraWithoutWaiting(app_.camera.s_Camera_Name);
    if (!app_.camera.b_Camera_Connected) {
        reportFailure();
        return;
    }
    // A movie that follows the camera takes its new resolution.
    if (cameraDelegate.cameraInput() != before && app_.compose.cameraIsPrimary() && app_.compose.followsSource())
        app_.camera.b_Change_to_Camera_Resolution = true;
}

void ConnectedCamera::reportFailure()
{
    qWarning("%s", qUtf8Printable(cameraDelegate.trouble()));
    window_.showMessage(MessageTopic::Camera, {cameraDelegate.trouble()});
    platform_.dialogs->runAlert({QStringLiteral("Error"),
                                 QStringLiteral("Could not start Camera. Change Camera Resolution and try again."),
                                 {QStringLiteral("Close")}});
    cameraDelegate.stopCamera();
    drop();
}

void ConnectedCamera::drop()
{
    app_.camera.m_i_Camera_Capture_FPS = 1;
    app_.camera.s_Camera_Name = doNotConnectToCamera;
    if (options_.isUnattended())
        return; // an unattended run does not change the user's choices
    app_.storeInteger("i_Camera_Capture_FPS", 1);
    app_.storeText("s_Camera_Name", app_.camera.s_Camera_Name);
}

void ConnectedCamera::adaptControls()
{
    app_.EnableCameraRelatedControls(app_.camera.b_Camera_Connected);
    if (!app_.camera.b_Camera_Connected)
        showScreenAlone();
    if (app_.recording.m_RecordStatus != Idle)
        return; // it began before the camera failed and keeps its rate
    app_.recording.i_fps_of_Recording = app_.nominalRate();
    app_.createRefreshTimers();
}

void ConnectedCamera::showScreenAlone()
{
    const bool sizeOfCamera = app_.compose.cameraIsPrimary() && app_.compose.followsSource();
    app_.compose.i_Video_Source_Primary = ScreenPrimary;
    app_.compose.i_Show_Secondary = 0;
    app_.camera.b_Change_to_Camera_Resolution = false;
    app_.EnableScreenCaptureModes(true);
    if (sizeOfCamera && app_.recording.m_RecordStatus == Idle) {
        app_.setVideoOutputSize(app_.capture.size_Screen);
        app_.Refresh_Preview_Window();
    }
}

void ConnectedCamera::connectSignals()
{
    connect(&cameraDelegate, &CameraDelegate::pictureTaken, this, &ConnectedCamera::adoptSize);
    connect(&cameraDelegate, &CameraDelegate::startFailed, this, [this] {
        app_.camera.b_Camera_Connected = false;
        reportFailure();
        adaptControls();
    });
    connect(&cameraDelegate, &CameraDelegate::cameraPresenceChanged, this, [this](bool present) {
        app_.camera.b_Camera_Gone = !present;
        if (present)
            app_.recording.incidents.end(RecordingIncidents::Kind::CameraGone, app_.recording.movieSeconds());
        else if (app_.compose.showsCamera())
            app_.recording.incidents.begin(RecordingIncidents::Kind::CameraGone, app_.recording.movieSeconds());
        const QString text = present ? tr("The camera %1 is back.")
                                     : tr("The camera %1 is gone. Its last picture stays until it comes back.");
        app_.tell(
            MessageTopic::Camera,
            {text.arg(app_.camera.s_Camera_Name), {}, present ? Message::Kind::Information : Message::Kind::Warning});
        if (present && app_.recording.m_RecordStatus == Idle)
            window_.withdrawMessage(MessageTopic::Camera);
    });
}

void ConnectedCamera::adoptSize()
{
    if (!app_.camera.b_Change_to_Camera_Resolution)
        return;
    app_.setVideoOutputSize(app_.camera.size_Camera);
    // On the first change the preview has not opened yet and will open in the right shape.
    if (app_.camera.i_Camera_Resolution_Change_Count > 0 && app_.recording.m_RecordStatus == Idle)
        app_.Refresh_Preview_Window();
    app_.camera.b_Change_to_Camera_Resolution = false;
    ++app_.camera.i_Camera_Resolution_Change_Count;
}

} // namespace lumavex
