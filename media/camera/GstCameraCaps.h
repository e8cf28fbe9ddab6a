// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/CameraModes.h"
#include "media/gstreamer/GstPtr.h"

#include <string>
#include <vector>

namespace lumavex {

/// What the caps of a camera offer, as modes to choose from. Kinds of pictures that nothing here can read are left out.
class GstCameraCaps {
public:
    /// `caps` may be null: no modes.
    explicit GstCameraCaps(const GstCaps* caps);

    const std::vector<CameraMode>& modes() const { return modes_; }
    /// The fixed caps to ask the camera for.
    GstPtr<GstCaps> capsOf(const CameraChoice& choice) const;
    /// Whether the pictures reach us only by way of a converting element.
    bool needsConversion(const CameraChoice& choice) const;

private:
    struct Kind {
        std::string media;
        std::string format; ///< empty for JPEG, and when the camera does not say
        int rateNumerator = 0;
        int rateDenominator = 1;
        bool converted = false;
    };
    void add(const GstStructure* structure, Kind kind, int cost);

    std::vector<Kind> kinds_; ///< by the modes' ids
    std::vector<CameraMode> modes_;
};

} // namespace lumavex
