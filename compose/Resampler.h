// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "compose/Canvas.h"

#include <QImage>
#include <QRect>

#include <cstdint>
#include <vector>

namespace lumavex {

/// Draws parts of pictures at other sizes. At equal size pixels are copied. Below half the size the mean is
/// taken over blocks of 2, 3, 4, 6, 8, 12 or 16 pixels to a side; what remains is interpolated between neighbours.
/// Nothing of the picture outside the part is mixed in. Keeps its working memory, so use one again for the next frame.
/// Not for several threads at once.
class Resampler {
public:
    /// Draws `source`, a part of a picture of 32-bit pixels, into `target` of the canvas, of which only `clip` is
    /// written. `clip` lies inside the canvas and inside `target`; none of them is empty.
    void draw(const QImage& picture, const QRect& source, const QRect& target, const QRect& clip, const Canvas& canvas,
              AlphaUse alpha);

    /// The pixels of `target` whose colours depend on the given part of the picture, or a few more; inside `target`.
    static QRect reached(const QRect& source, const QRect& target, const QRect& part);

private:
    /// One axis: where the pixels of the clip take their colour from.
    struct Axis {
        int block = 1;                     ///< source pixels averaged to one
        int start = 0;                     ///< first source pixel needed, from the picture's edge
        int length = 0;                    ///< source pixels needed
        int count = 0;                     ///< of these blocks of them, the last one perhaps incomplete
        std::vector<std::int32_t> first;   ///< for each pixel of the clip: the left or upper of its two blocks
        std::vector<std::uint16_t> weight; ///< the other block's share, of 256
        void prepare(int sourceStart, int sourceLength, int targetStart, int targetLength, int clipStart,
                     int clipLength);
    };

    const std::uint32_t* sourceRow(const QImage& picture, int block);
    void prepareTaps();

    Axis columns_;
    Axis rows_;
    std::vector<std::uint16_t> taps_; ///< the columns' weights as RowFunctions wants them
    std::vector<std::uint64_t> sums_;
    std::vector<std::uint32_t> blocks_[2]; ///< the two latest rows of blocks
    int blockRow_[2] = {-1, -1};           ///< which rows they are
    std::vector<std::uint32_t> mixed_;
};

} // namespace lumavex
