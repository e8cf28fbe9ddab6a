// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/ChangedArea.h"
#include "compose/FramePlan.h"

#include <cstdint>

namespace lumavex {

/// What a frame was painted from, without the pictures themselves: by their numbers.
struct FrameContents {
    FramePlan plan;
    std::uint64_t screen = 0;
    std::uint64_t camera = 0;
    std::uint64_t cursor = 0;
    std::uint64_t overlay = 0;

    static FrameContents of(const FrameInputs& inputs, const FrameTarget& target);
};

/// Where a frame may differ from an earlier one of the same size. `screenChanges` tells where the screen's picture
/// does. Pure function, any thread.
ChangedArea frameChanges(const FrameContents& before, const FrameContents& now, const ChangeHistory& screenChanges);

} // namespace lumavex
