// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/MoreSettings.h"
#include "base/Geometry.h"

#include <QString>

#include <chrono>
#include <cstdint>
#include <optional>

namespace lumavex {

/// The parsed command line. Settings given here apply to this run and are not stored.
struct LaunchOptions {
    std::optional<double> recordSeconds; ///< record this long without a user, then end
    QString output;                      ///< path of the movie
    QString snapshot;                    ///< take one picture without a user, save it to this path, then end
    enum class Existing { Refuse, Overwrite } existing = Existing::Refuse;
    enum class Load { Refuse, Ignore } load = Load::Refuse; ///< effect of an overloaded machine on a recording

    QString stats; ///< file that gets one line of JSON per second; empty for none

    std::optional<std::int64_t> framesPerSecond;
    std::optional<CGSize> size; ///< output size; 0 x 0 for the screen's size
    std::optional<bool> sound;
    std::optional<bool> cursor;
    bool hideOwnWindows = false;

    enum class Source { Screen, Camera, Both, BothCameraLarge };
    std::optional<Source> source;
    std::optional<std::int64_t> captureType; ///< a ScreenCaptureType
    /// The region, in pixels from the UPPER-left corner of the main display, y downward, as in other tools.
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

    QString overlay;                               ///< file of the overlay picture, which is then drawn; empty: no
                                                   ///< picture
    std::optional<std::int64_t> overlayPosition;   ///< 0 to 8, row by row from the top left
    std::optional<std::int64_t> overlaySize;       ///< its width in units of ten pixels of the movie
    std::optional<std::int64_t> secondaryPosition; ///< position of the source that is the small picture, 0 to 8
    std::optional<std::int64_t> secondarySize;     ///< size code 0 to 4
    std::optional<float> saturation;               ///< colour control, ten times its value; enables the colour controls
    std::optional<float> brightness;
    std::optional<float> contrast;

    enum class List { Nothing, Cameras, Windows, Sizes } list = List::Nothing; ///< print this list and end

    bool needsCamera() const { return source && *source != Source::Screen; }
    bool adjustsColours() const { return saturation || brightness || contrast; }
    /// True when no user can see windows or answer.
    bool isUnattended() const { return recordSeconds || !snapshot.isEmpty(); }
    /// Longest time without progress before work is ended; std::nullopt: unlimited, since a user can press Cancel.
    std::optional<std::chrono::seconds> patience() const
    {
        return isUnattended() ? std::optional(std::chrono::seconds(60)) : std::nullopt;
    }
    /// Path of the movie or picture of an unattended run.
    const QString& file() const { return snapshot.isEmpty() ? output : snapshot; }
};

} // namespace lumavex
