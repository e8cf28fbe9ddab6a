// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/ChangedArea.h"
#include "compose/FramePlan.h"

#include <cstdint>

namespace lumavex {

/// The sources that a frame was painted from, as numbers without the pictures themselves.
struct FrameContents {
    FramePlan plan;
    std::uint64_t screen = 0;
    std::uint64_t camera = 0;
    std::uint64_t cursor = 0;
    std::uint64_t overlay = 0;

    static FrameContents of(const FrameInputs& inputs, const FrameTarget& target);
};

/// Area in which a frame may differ from an earlier one of the same size. `screenChanges` gives the area for the
/// screen's picture. Pure function, any thread.
ChangedArea frameChanges(const FrameContents& before, const FrameContents& now, const ChangeHistory& screenChanges);

} // namespace lumavex
