// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSize>

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

/// Chooses the mode for a resolution code:
///   0 Low, 1 Medium, 2 High    the camera's size nearest to 320x240, 640x480, 1280x720
///   3 to 7                     320x240, 352x288, 640x480, 960x540, 1280x720: that size, else the smallest larger one
///                              that it can be scaled from, preferably of the same shape
/// std::nullopt when the code is none of these or the camera offers no size that large.
std::optional<CameraChoice> chooseCameraMode(const std::vector<CameraMode>& modes, std::int64_t preset);

/// The size of a resolution code (for 0 to 2 the size to approach). std::nullopt for other codes.
std::optional<QSize> cameraPresetSize(std::int64_t preset);

} // namespace lumavex
