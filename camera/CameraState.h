// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Geometry.h"

#include <QImage>
#include <QString>
#include <QStringList>

#include <cstdint>

namespace lumavex {

/// Stored as the camera's name when no camera is wanted. Compared and stored, so never translated.
inline const QString doNotConnectToCamera = QStringLiteral("Do not connect to Camera");

/// The camera part of the program's state, on the main thread. Pictures come from the capture queue complete.
struct CameraState {
    QStringList
        arrayCameras; ///< names, listed once: at start-up if a camera is to run, else soon after the window is shown
    QString s_Camera_Name;
    std::int64_t i_Camera_CRP = 0;              ///< resolution code 0 to 7
    std::int64_t m_i_Camera_Capture_FPS = 0;    ///< frames a second; used only for the recording's rate
    bool b_Camera_Connected = false;            ///< a camera is running
    bool b_Camera_Gone = false;                 ///< it is unplugged, and its last picture stays
    bool b_Change_to_Camera_Resolution = false; ///< the output adopts the camera's size at its next frame
    std::int64_t i_Camera_Resolution_Change_Count = 0;

    QImage imgDeviceCapture;        ///< the latest picture, Format_RGB32; null until the first
    std::uint64_t serialCamera = 0; ///< changes with imgDeviceCapture
    CGSize size_Camera;             ///< its size in pixels

    bool bApplyColorControls = false;
    float f_ColorControls_Saturation = 10.0F; ///< each is ten times its value
    float f_ColorControls_Brightness = 0.0F;
    float f_ColorControls_Contrast = 10.0F;
};

} // namespace lumavex
