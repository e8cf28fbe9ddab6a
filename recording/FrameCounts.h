// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"

#include <algorithm>
#include <cstdint>

namespace lumavex {

/// Counts of the frames of a recording since Record. Main thread.
struct FrameCounts {
    std::int64_t composed = 0;
    std::int64_t late = 0;   ///< the machine was too slow, so the previous frame was repeated
    Nanoseconds lateness{0}; ///< largest delay between a frame's due time and its start since the last line of
                             ///< statistics

    /// Seconds in which more than half of the frames were late although the picture changed meanwhile.
    int shortSeconds = 0;
    int goodSeconds = 0; ///< since the latest second that was short or may yet prove short
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
    /// The frame equals the previous one, so the late frames in between missed nothing.
    void repeatUnchanged()
    {
        open_ = 0;
        openSeconds_ = 0;
    }
    /// The frame differs, so the late frames in between missed a change.
    void showChange()
    {
        missed_ += open_;
        shortSeconds += openSeconds_;
        repeatUnchanged();
    }
    /// Called after every second with the number of frames appended in it.
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
    // Late frames of the current second: those during a change of the picture, and those for which this is not known
    // yet.
    std::int64_t missed_ = 0;
    std::int64_t open_ = 0;
    int openSeconds_ = 0; ///< seconds that count as short if the picture has changed
    std::int64_t composedBefore_ = 0;
};

} // namespace lumavex
