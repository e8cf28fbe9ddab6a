// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/CameraFrame.h"
#include "base/ColorMatrix.h"
#include "camera/PicturePool.h"

#include <QImage>

#include <memory>
#include <optional>
#include <vector>

namespace lumavex {

class JpegFrame;

/// Converts camera frames to pictures: unpacks, scales when a smaller picture is wanted, and applies the colour
/// controls, in one pass over the pixels as far as the format allows. One thread at a time.
class FrameConverter {
public:
    FrameConverter();
    ~FrameConverter();

    /// Returns the frame as a picture of Format_RGB32. Null when the frame is damaged beyond use.
    QImage convert(const CameraFrame& frame, const std::optional<ColorMatrix>& controls);

    /// The centred part of an area of this size that has the shape of `picture`.
    static QRect partOfShape(const QSize& size, const QSize& picture);

private:
    struct Target;

    bool unpack(const CameraFrame& frame, const Target& target);
    bool unpackRows(const CameraFrame& frame, int top, int rows, std::uint8_t* to, int stride);
    bool unpackYuy2(const CameraFrame& frame, int top, int rows, std::uint8_t* to, int stride);
    QImage scaled(const CameraFrame& frame, const QSize& picture, const std::optional<ColorMatrix>& controls);

    PicturePool pool_;
    std::unique_ptr<JpegFrame> jpeg_;
    std::vector<std::uint32_t> whole_;     ///< the unpacked frame, before it is scaled
    std::vector<std::uint32_t> halved_[2]; ///< intermediate results of a reduction to less than half the size
    std::vector<std::uint8_t> unpacked_;   ///< planes of some rows
};

} // namespace lumavex
