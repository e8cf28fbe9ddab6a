// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/CameraFrame.h"

#include <QImage>

#include <vector>

namespace lumavex {

/// A picture packed as a camera would pack it: YUV in the colours of BT.601, limited range; JPEG at 4:2:2.
class FakeCameraFrame {
public:
    FakeCameraFrame(const QImage& picture, CameraPixels pixels);

    /// Valid as long as this lives; `picture` and `source` are left for the caller.
    CameraFrame frame() const;

private:
    CameraPixels pixels_;
    QSize size_;
    std::vector<std::uint8_t> planes_[3];
    int strides_[3] = {};
};

} // namespace lumavex
