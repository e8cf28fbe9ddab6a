// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSize>

#include <cstdint>
#include <optional>
#include <vector>

namespace lumavex {

/// Sizes a camera offers in one kind of picture: one size, or all from the smallest to the largest in steps.
struct CameraMode {
    QSize smallest;
    QSize largest;
    QSize step = {1, 1};
    double rate = 0;    ///< the frame rate nearest to 30 it can deliver at these sizes; 0: not known
    int cost = 0;       ///< what a frame costs to convert; of modes as good otherwise the cheapest is taken
    std::size_t id = 0; ///< whatever the owner of the list finds it again by
};

struct CameraChoice {
    std::size_t id = 0; ///< of the mode
    QSize size;         ///< what the camera is to deliver
    QSize picture;      ///< what is made of it; not larger than `size`
};

/// The mode for a resolution code:
///   0 Low, 1 Medium, 2 High    the camera's size nearest to 320x240, 640x480, 1280x720
///   3 to 7                     320x240, 352x288, 640x480, 960x540, 1280x720: that size, else the smallest larger one
///                              it can be scaled from, one of the same shape before others
/// Nothing when the code is none of these or the camera offers nothing as large.
std::optional<CameraChoice> chooseCameraMode(const std::vector<CameraMode>& modes, std::int64_t preset);

/// The size a resolution code stands for (for 0 to 2 the one to be near to). Nothing for other codes.
std::optional<QSize> cameraPresetSize(std::int64_t preset);

} // namespace lumavex
