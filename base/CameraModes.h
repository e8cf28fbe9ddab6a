// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSize>

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace lumavex {

/// Sizes that a camera offers in one pixel format: one size, or all from the smallest to the largest in steps.
struct CameraMode {
    QSize smallest;
    QSize largest;
    QSize step = {1, 1};
    double rate = 0;    ///< available frame rate nearest to 30 at these sizes; 0: unknown
    int cost = 0;       ///< cost of converting a frame; of otherwise equal modes the cheapest wins
    std::size_t id = 0; ///< identifies the mode to the owner of the list
};

struct CameraChoice {
    std::size_t id = 0; ///< id of the mode
    QSize size;         ///< size that the camera delivers
    QSize picture;      ///< size of the picture made from it; not larger than `size`
};

/// A resolution that the user chooses by its code, which is its index in kCameraPresets.
struct CameraPreset {
    const char* name;
    QSize size;
    enum class Match { Nearest, Exact } match; ///< Nearest: the camera's size nearest to `size` is used as it is
};
inline constexpr std::array kCameraPresets = {
    CameraPreset{"Low", {320, 240}, CameraPreset::Match::Nearest},
    CameraPreset{"Medium", {640, 480}, CameraPreset::Match::Nearest},
    CameraPreset{"High", {1280, 720}, CameraPreset::Match::Nearest},
    CameraPreset{"320x240", {320, 240}, CameraPreset::Match::Exact},
    CameraPreset{"352x288", {352, 288}, CameraPreset::Match::Exact},
    CameraPreset{"640x480", {640, 480}, CameraPreset::Match::Exact},
    CameraPreset{"960x540", {960, 540}, CameraPreset::Match::Exact},
    CameraPreset{"1280x720", {1280, 720}, CameraPreset::Match::Exact},
};

/// Chooses the mode for a resolution code:
///   Match::Nearest    the camera's size nearest to the preset's
///   Match::Exact      the preset's size, else the smallest larger one that it can be scaled from, preferably of the
///                     same shape
/// std::nullopt when there is no such code or the camera offers no size that large.
std::optional<CameraChoice> chooseCameraMode(const std::vector<CameraMode>& modes, std::int64_t preset);

/// The preset of a resolution code; null when there is none.
const CameraPreset* cameraPreset(std::int64_t code);

} // namespace lumavex
