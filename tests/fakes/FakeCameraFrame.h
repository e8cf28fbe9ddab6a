// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/CameraFrame.h"

#include <QImage>

#include <vector>

namespace lumavex {

/// A picture in a camera's pixel format: YUV with BT.601, limited range; JPEG at 4:2:2.
class FakeCameraFrame {
public:
    FakeCameraFrame(const QImage& picture, CameraPixels pixels);

    /// Valid as long as this object lives; the caller sets `picture` and `source`.
    CameraFrame frame() const;

private:
    CameraPixels pixels_;
    QSize size_;
    std::vector<std::uint8_t> planes_[3];
    int strides_[3] = {};
};

} // namespace lumavex
