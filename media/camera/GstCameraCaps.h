// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/CameraModes.h"
#include "media/gstreamer/GstPtr.h"

#include <string>
#include <vector>

namespace lumavex {

/// The caps of a camera as modes to choose from. Leaves out formats that nothing here can read.
class GstCameraCaps {
public:
    /// `caps` may be null: no modes.
    explicit GstCameraCaps(const GstCaps* caps);

    const std::vector<CameraMode>& modes() const { return modes_; }
    /// The fixed caps to request from the camera.
    GstPtr<GstCaps> capsOf(const CameraChoice& choice) const;
    /// True when the frames need a converting element.
    bool needsConversion(const CameraChoice& choice) const;

private:
    struct Kind {
        std::string media;
        std::string format; ///< empty for JPEG, and when the camera does not specify it
        int rateNumerator = 0;
        int rateDenominator = 1;
        bool converted = false;
    };
    void add(const GstStructure* structure, Kind kind, int cost);

    std::vector<Kind> kinds_; ///< indexed by the modes' ids
    std::vector<CameraMode> modes_;
};

} // namespace lumavex
