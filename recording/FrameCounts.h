// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"

#include <algorithm>
#include <cstdint>

namespace lumavex {

/// What the making of a recording's frames counts, since Record. Main thread.
struct FrameCounts {
    std::int64_t composed = 0;
    std::int64_t late = 0;   ///< the machine could not keep up, so the frame before stands for them
    Nanoseconds lateness{0}; ///< the longest that a frame was begun after it was due, since the last line of statistics

    /// The seconds in which more than half of the frames were late although the picture changed meanwhile.
    int shortSeconds = 0;
    int goodSeconds = 0; ///< since the latest one that was short, or may turn out to have been
    struct Second {
        std::int64_t frames = 0;
        std::int64_t composed = 0;
    } latestShortSecond;

    void noteLateness(Nanoseconds after) { lateness = std::max(lateness, after); }
    void repeatLate()
    {
        ++late;
        ++open_;
    }
    /// The frame looks as the one before, so the late ones in between missed nothing.
    void repeatUnchanged()
    {
        open_ = 0;
        openSeconds_ = 0;
    }
    /// The frame looks otherwise, so the late ones in between missed something.
    void showChange()
    {
        missed_ += open_;
        shortSeconds += openSeconds_;
        repeatUnchanged();
    }
    /// To be called after every second, in which so many frames were appended.
    void endSecond(std::int64_t frames)
    {
        const bool isShort = 2 * missed_ > frames;
        if (isShort)
            ++shortSeconds;
        else if (2 * (missed_ + open_) > frames)
            ++openSeconds_;
        if (isShort || openSeconds_ > 0)
            latestShortSecond = {frames, composed - composedBefore_};
        goodSeconds = isShort || openSeconds_ > 0 ? 0 : goodSeconds + 1;
        composedBefore_ = composed;
        missed_ = 0;
        open_ = 0;
    }

private:
    // Of the current second: late frames during which the picture changed, and those of which that is still open.
    std::int64_t missed_ = 0;
    std::int64_t open_ = 0;
    int openSeconds_ = 0; ///< that will have been short if the picture has changed
    std::int64_t composedBefore_ = 0;
};

} // namespace lumavex
