// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/sound/SoundFormat.h"

#include <cstdint>
#include <deque>
#include <limits>
#include <vector>

namespace lumavex {

/// Selects the sound of a device that goes into a file: exactly the recorded times, on the monotonic clock.
///
///     chunks ──► alignment ──► pending sound ──► cut to the recorded times ──► file
///     (device's   one frame a    (frames of the    (silence where there is
///      clock)     chunk at most)  monotonic clock)   no sound)
///
/// All positions are frames of the monotonic clock, 44100 per second, so a cut is exact and the file's length is the
/// recorded time, rounded once. Sound is decided half a second after its time: until then record() and pause() may
/// still be called with a past time, and sound may arrive before the time at which it is heard (the monitor of a sink
/// does that). Pure, no thread.
class SoundTimeline {
public:
    /// The sound from `from` on belongs to the file. Ignored while recording.
    void record(Nanoseconds from);
    /// The sound from `at` on does not belong to the file. Ignored while paused.
    void pause(Nanoseconds at);

    /// Adds sound. A chunk should be 10 ms long: each moves the alignment by at most one frame, which keeps up with a
    /// device that is off by 2200 ppm.
    void add(const SoundChunk& chunk);
    /// No sound is expected until more is added: silence need not wait for it.
    void soundLost();

    /// Appends to `out` the frames that can be decided at `now`.
    void advance(Nanoseconds now, std::vector<std::int16_t>& out);
    /// Appends to `out` the rest, up to the last pause, with silence for missing sound. Nothing while recording.
    void finish(std::vector<std::int16_t>& out);

    bool isRecording() const;
    /// True when paused and the sound up to the pause has arrived.
    bool isHeardToTheEnd() const;
    /// Total length of the intervals that have ended, in frames.
    std::int64_t length() const;
    /// Frames appended to `out` so far. Exceeds length() at the end only when the last pause() was called more than
    /// half a second late: the file must be cut then.
    std::int64_t framesWritten() const { return written_; }
    /// Single frames by which the alignment was moved so far; for tests and logs.
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
    Nanoseconds recorded_{0}; ///< total of the closed intervals
    std::int64_t written_ = 0;
    std::int64_t decided_ = std::numeric_limits<std::int64_t>::min();

    std::vector<std::int16_t> pending_; ///< frames from pendingBegin_ on
    std::int64_t pendingBegin_ = 0;

    bool aligned_ = false;
    std::int64_t next_ = 0;           ///< first frame of the next chunk, when aligned
    std::int64_t begun_ = 0;          ///< first frame of the alignment
    std::vector<double> firstErrors_; ///< frames by which the first chunks were stamped later than counted
    double meanError_ = 0;            ///< mean of the same for later chunks
    int jumps_ = 0;                   ///< consecutive chunks stamped far from the count
    int uncorrected_ = 0;             ///< chunks since the last correction
    std::int64_t corrections_ = 0;
    std::vector<std::int16_t> corrected_;
};

} // namespace lumavex
