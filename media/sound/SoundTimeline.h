// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/sound/SoundFormat.h"

#include <cstdint>
#include <deque>
#include <limits>
#include <vector>

namespace lumavex {

/// Decides what of the sound a device delivers goes into a file: exactly the recorded times, on the monotonic clock.
///
///     chunks ──► alignment ──► pending sound ──► cut to the recorded times ──► file
///     (device's   one frame a    (frames of the    (silence where there is
///      clock)     chunk at most)  monotonic clock)   no sound)
///
/// Everything is counted in frames of the monotonic clock, 44100 of them to its second, so a cut is exact and the
/// file's length is the recorded time, rounded once. What has come is decided upon half a second later: until then
/// record and pause may still be told with a time gone by, and sound may come before the time it is heard at (the
/// monitor of a sink does that). Pure, no thread.
class SoundTimeline {
public:
    /// The sound from `from` on belongs to the file. Ignored while recording.
    void record(Nanoseconds from);
    /// The sound from `at` on does not. Ignored while paused.
    void pause(Nanoseconds at);

    /// Takes sound. A chunk is meant to be 10 ms long: each moves the alignment by at most one frame, which keeps up
    /// with a device that is off by 2200 ppm.
    void add(const SoundChunk& chunk);
    /// No sound is to be expected until more comes: silence need not wait for it.
    void soundLost();

    /// Appends to `out` what can be decided upon at `now`.
    void advance(Nanoseconds now, std::vector<std::int16_t>& out);
    /// Appends to `out` the rest, up to the last pause; what has not come is silence. Nothing while recording.
    void finish(std::vector<std::int16_t>& out);

    bool isRecording() const;
    /// True when paused and the sound up to the pause has come.
    bool isHeardToTheEnd() const;
    /// Frames the file is to have, of the intervals that have ended.
    std::int64_t length() const;
    /// Frames given out so far. More than length() at the end only when the last pause was told later than half a
    /// second: the file is to be cut then.
    std::int64_t framesWritten() const { return written_; }
    /// Frames by which the alignment was moved so far, by single frames only; for tests and logs.
    std::int64_t corrections() const { return corrections_; }

private:
    /// Frames [begin, end) of the monotonic clock are the frames of the file from fileBegin on.
    struct Interval {
        std::int64_t begin = 0;
        std::int64_t end = kOpen;
        std::int64_t fileBegin = 0;
    };
    static constexpr std::int64_t kOpen = std::numeric_limits<std::int64_t>::max();

    void begin(std::int64_t frame);
    void placeBeginning(double error);
    int correction(double error);
    void store(std::int64_t begin, std::span<const std::int16_t> samples);
    void decide(std::int64_t until, std::vector<std::int16_t>& out);
    void emitFrames(std::int64_t begin, std::int64_t end, std::vector<std::int16_t>& out);
    std::int64_t pendingEnd() const;

    std::deque<Interval> intervals_;
    Nanoseconds recordedSince_{0};
    Nanoseconds recorded_{0}; ///< the sum of the closed intervals
    std::int64_t written_ = 0;
    std::int64_t decided_ = std::numeric_limits<std::int64_t>::min();

    std::vector<std::int16_t> pending_; ///< frames from pendingBegin_ on
    std::int64_t pendingBegin_ = 0;

    bool aligned_ = false;
    std::int64_t next_ = 0;           ///< the frame the next chunk begins at, when aligned
    std::int64_t begun_ = 0;          ///< where the alignment was begun
    std::vector<double> firstErrors_; ///< frames by which the first chunks were stamped later than counted
    double meanError_ = 0;            ///< the same, averaged, of later chunks
    int jumps_ = 0;                   ///< chunks in a row stamped far from the count
    int uncorrected_ = 0;             ///< chunks since the last correction
    std::int64_t corrections_ = 0;
    std::vector<std::int16_t> corrected_;
};

} // namespace lumavex
