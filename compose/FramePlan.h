// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "compose/FrameInputs.h"

#include <QRect>
#include <QSize>

#include <array>
#include <cstddef>

// Steps that paint a frame, in whole pixels. Pure functions, any thread. Here, and from here on, rectangles are
// downward: these are rows and columns of memory, top row first.

namespace lumavex {

enum class FramePass {
    Preview, ///< the primary picture fills the frame when the output frame follows its source
    Output,  ///< the primary picture is always fitted
};

/// The frame to plan: the geometry counts units, the plan counts pixels.
struct FrameTarget {
    FramePass pass = FramePass::Output;
    QSize pixels;
    CGSize units;
};

enum class FramePicture { None, Screen, Camera, Cursor, Overlay };

/// One paint operation. The steps are painted in order; a picture is resampled from `source` to `target`.
struct FrameStep {
    enum class Kind {
        Clear,   ///< nothing is drawn here: transparent
        Black,   ///< opaque black
        Opaque,  ///< the picture, regardless of its alpha bytes
        Blended, ///< the picture over the existing pixels
    };
    Kind kind = Kind::Clear;
    FramePicture picture = FramePicture::None;
    QRect clip;   ///< the written pixels of the frame; inside the frame and inside `target`, not empty
    QRect source; ///< whole pixels of the picture, inside it, not empty
    QRect target; ///< destination of `source`, to the nearest pixel; may extend beyond the frame
    friend bool operator==(const FrameStep&, const FrameStep&) = default;
};

/// The steps of one frame. Has a fixed capacity, since one is made for every frame.
class FramePlan {
public:
    /// Bars around the primary and the secondary picture, these two pictures, the cursor, the overlay, and the
    /// clearing.
    static constexpr std::size_t capacity = 2 * 4 + 2 + 1 + 1 + 1;

    const FrameStep* begin() const { return steps_.data(); }
    const FrameStep* end() const { return steps_.data() + count_; }
    std::size_t size() const { return count_; }
    const FrameStep& operator[](std::size_t index) const { return steps_.at(index); }
    void add(const FrameStep& step) { steps_.at(count_++) = step; }

private:
    std::array<FrameStep, capacity> steps_;
    std::size_t count_ = 0;
};

/// The plan writes every pixel of the frame. An empty target gives an empty plan.
FramePlan planFrame(const FrameInputs& inputs, const FrameTarget& target);

} // namespace lumavex
