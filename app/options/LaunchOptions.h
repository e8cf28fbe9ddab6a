// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/MoreSettings.h"
#include "base/Geometry.h"

#include <QString>

#include <chrono>
#include <cstdint>
#include <optional>

namespace lumavex {

/// What the command line asks for. Settings named here hold for this run and are not stored.
struct LaunchOptions {
    std::optional<double> recordSeconds; ///< record this long without a user, then end
    QString output;                      ///< where the movie goes
    QString snapshot;                    ///< take one picture without a user, save it here, then end
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
    std::optional<CGSize> follow; ///< size of the rectangle that follows the cursor
    QString window;               ///< part of the name of the window to capture
    std::optional<WhenWindowGoes> whenWindowGoes;
    QString camera;                         ///< name of the camera
    std::optional<std::int64_t> cameraSize; ///< resolution code 0 to 7

    QString overlay;                               ///< file of the overlay picture, which is then drawn; empty: none
    std::optional<std::int64_t> overlayPosition;   ///< 0 to 8, row by row from the top left
    std::optional<std::int64_t> overlaySize;       ///< its width in tens of the movie's pixels
    std::optional<std::int64_t> secondaryPosition; ///< of whichever source is the small picture, 0 to 8
    std::optional<std::int64_t> secondarySize;     ///< size code 0 to 4
    std::optional<float> saturation;               ///< a colour control, ten times its value; switches them on
    std::optional<float> brightness;
    std::optional<float> contrast;

    enum class List { Nothing, Cameras, Windows, Sizes } list = List::Nothing; ///< print these and end

    bool needsCamera() const { return source && *source != Source::Screen; }
    bool adjustsColours() const { return saturation || brightness || contrast; }
    /// Nobody is there to see windows or to answer.
    bool isUnattended() const { return recordSeconds || !snapshot.isEmpty(); }
    /// How long work may stand still before it is ended; nothing: for ever, since somebody is there to press Cancel.
    std::optional<std::chrono::seconds> patience() const
    {
        return isUnattended() ? std::optional(std::chrono::seconds(60)) : std::nullopt;
    }
    /// Where the movie or the picture of an unattended run goes.
    const QString& file() const { return snapshot.isEmpty() ? output : snapshot; }
};

} // namespace lumavex
