// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"

#include "app/Window_Main.h"

#include <QAction>

namespace lumavex {

void AppDelegate::EnableCameraRelatedControls(bool enabled)
{
    for (QAction* item : {window_.menuCameraAlone, window_.menuBothScreenPrimary, window_.menuBothCameraPrimary})
        item->setEnabled(enabled);
}

void AppDelegate::EnableScreenCaptureModes(bool enabled)
{
    for (QAction* item : {window_.toolbarEntireScreen, window_.toolbarFollowCursor, window_.toolbarRegion,
                          window_.toolbarWindowExclusive, window_.menuEntireScreen, window_.menuFollowCursor,
                          window_.menuRegion, window_.menuWindowExclusive})
        item->setEnabled(enabled);
}

void AppDelegate::startCameraOfSettings()
{
    camera.arrayCameras = platform_.cameras->names();
    if (camera.s_Camera_Name == doNotConnectToCamera)
        return;
    const QString problem = platform_.cameras->open({camera.s_Camera_Name, camera.i_Camera_CRP});
    camera.b_Camera_Connected = problem.isEmpty();
    if (camera.b_Camera_Connected)
        return;
    qWarning("%s", qUtf8Printable(problem));
    platform_.dialogs->runAlert({QStringLiteral("Error"),
                                 QStringLiteral("Could not start Camera. Change Camera Resolution and try again."),
                                 {QStringLiteral("Close")}});
    platform_.cameras->stop();
    camera.m_i_Camera_Capture_FPS = 1;
    storeInteger("i_Camera_Capture_FPS", 1);
    camera.s_Camera_Name = doNotConnectToCamera;
    storeText("s_Camera_Name", camera.s_Camera_Name);
}

void AppDelegate::setUpSourceControls()
{
    EnableCameraRelatedControls(camera.b_Camera_Connected);
    const bool cameraOnly = compose.i_Video_Source_Primary == 2 && compose.i_Show_Secondary == 0;
    if (!camera.b_Camera_Connected) {
        compose.i_Video_Source_Primary = 1;
        compose.i_Show_Secondary = 0;
    } else if (cameraOnly && compose.index_size_Video_Output == 0) {
        camera.b_Change_to_Camera_Resolution = true;
    }
    EnableScreenCaptureModes(!camera.b_Camera_Connected || !cameraOnly);
}

} // namespace lumavex
