// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "media/gstreamer/GstPtr.h"

#include <cstdint>
#include <vector>

namespace lumavex {

/// Plays sound to a sink of the current server, and knows when each frame is heard.
class SoundPlayer {
public:
    /// Interleaved frames of 44100 Hz and two channels.
    explicit SoundPlayer(const std::vector<std::int16_t>& samples,
                         const char* sink = nullptr); ///< null: the default one
    ~SoundPlayer();

    /// When the first frame was heard, by the sink's clock. To be asked while it plays.
    Nanoseconds firstFrameHeardAt() const;
    /// The same, the middle one of several answers in a fifth of a second, since they jitter.
    Nanoseconds steadyFirstFrameHeardAt() const;

private:
    GstPtr<GstElement> pipeline_;
};

} // namespace lumavex
