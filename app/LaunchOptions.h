// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Geometry.h"

#include <QString>

#include <cstdint>
#include <optional>

namespace lumavex {

/// What the command line asks for. Settings named here hold for this run and are not stored.
struct LaunchOptions {
    std::optional<double> recordSeconds; ///< record this long without a user, then end
    QString output;                      ///< where the movie goes
    enum class Existing { Refuse, Overwrite } existing = Existing::Refuse;
    enum class Load { Refuse, Ignore } load = Load::Refuse; ///< what an overloaded machine does to a recording

    QString stats; ///< file for a line of JSON a second; empty for none

    std::optional<std::int64_t> framesPerSecond;
    std::optional<CGSize> size; ///< output size; 0 x 0 for the screen's
    std::optional<bool> sound;
    std::optional<bool> cursor;
    bool hideOwnWindows = false;

    enum class Source { Screen, Camera, Both, BothCameraLarge };
    std::optional<Source> source;
    std::optional<std::int64_t> captureType; ///< a ScreenCaptureType
    /// Of the region, in pixels from the UPPER-left corner of the main display, y downward, as other tools count.
    struct Rectangle {
        int x = 0;
        int y = 0;
        int width = 0;
        int height = 0;
    };
    std::optional<Rectangle> region;
    std::optional<CGSize> follow;           ///< size of the rectangle that follows the cursor
    QString window;                         ///< part of the name of the window to capture
    QString camera;                         ///< name of the camera
    std::optional<std::int64_t> cameraSize; ///< resolution code 0 to 7

    enum class List { Nothing, Cameras, Windows, Sizes } list = List::Nothing; ///< print these and end

    bool needsCamera() const { return source && *source != Source::Screen; }
};

} // namespace lumavex
