// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "compose/Canvas.h"

#include <QImage>
#include <QRect>

#include <cstdint>
#include <vector>

namespace lumavex {

/// Draws parts of pictures at other sizes. Copies pixels at equal size. Below half the size it averages blocks with a
/// side of 2, 3, 4, 6, 8, 12 or 16 pixels; the remaining scale is interpolated between neighbours. Mixes in nothing of
/// the picture outside the part. Keeps its working memory, so reuse it for the next frame. One thread at a time.
class Resampler {
public:
    /// Draws `source`, a part of a picture of 32-bit pixels, into `target` of the canvas and writes only `clip` of it.
    /// `clip` is inside the canvas and inside `target`; none of them is empty.
    void draw(const QImage& picture, const QRect& source, const QRect& target, const QRect& clip, const Canvas& canvas,
              AlphaUse alpha);

    /// The pixels of `target` whose colours depend on the given part of the picture, or a few more; inside `target`.
    static QRect reached(const QRect& source, const QRect& target, const QRect& part);

private:
    /// One axis: the source of the clip's pixels.
    struct Axis {
        int block = 1;                     ///< source pixels averaged to one
        int start = 0;                     ///< first source pixel needed, from the picture's edge
        int length = 0;                    ///< source pixels needed
        int count = 0;                     ///< number of blocks in these; the last one may be incomplete
        std::vector<std::int32_t> first;   ///< for each pixel of the clip: the left or upper of its two blocks
        std::vector<std::uint16_t> weight; ///< the other block's share, of 256
        void prepare(int sourceStart, int sourceLength, int targetStart, int targetLength, int clipStart,
                     int clipLength);
    };

    const std::uint32_t* sourceRow(const QImage& picture, int block);
    void prepareTaps();

    Axis columns_;
    Axis rows_;
    std::vector<std::uint16_t> taps_; ///< the columns' weights in the form of RowFunctions
    std::vector<std::uint64_t> sums_;
    std::vector<std::uint32_t> blocks_[2]; ///< the two latest rows of blocks
    int blockRow_[2] = {-1, -1};           ///< the numbers of these rows
    std::vector<std::uint32_t> mixed_;
};

} // namespace lumavex
