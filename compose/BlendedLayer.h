// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "compose/Canvas.h"
#include "compose/Resampler.h"

#include <QImage>
#include <QRect>

#include <cstdint>
#include <vector>

namespace lumavex {

/// A picture with transparency at its size in the frame, scaled once and kept while picture and size stay the same. One
/// thread at a time.
class BlendedLayer {
public:
    /// Draws the picture, of any format, into `target`. Keeps `clip` of the result for the next call (see
    /// Resampler::draw()) and writes only `part`, which lies inside `clip`. `serial` changes whenever the picture does.
    void draw(const QImage& picture, std::uint64_t serial, const QRect& target, const QRect& clip, const QRect& part,
              const Canvas& canvas);

private:
    struct Key {
        std::uint64_t serial = 0;
        QSize picture;
        QSize target;
        QRect part; ///< the part that is kept: the clip relative to the target
        PixelOrder order = PixelOrder::BlueFirst;
        friend bool operator==(const Key&, const Key&) = default;
    };
    Key key_;
    Resampler resampler_;
    std::vector<std::uint32_t> pixels_; ///< premultiplied, of the kept part, in the canvas's order
};

} // namespace lumavex
