// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/sound/SoundTimeline.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace lumavex {
namespace {

using namespace std::chrono_literals;

constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;

/// Times that a decision waits for late calls, and for late sound.
constexpr Nanoseconds kSettling = 500ms;
constexpr Nanoseconds kPatience = 2s;

/// Maximum sound kept while the file cannot be written.
constexpr std::int64_t kMostPending = 8 * kSoundRate;

/// Averages over 128 chunks (1.3 s): jitter of 5 ms moves the mean by 0.2 ms, far less than the error that is
/// corrected.
constexpr double kAveraging = 1.0 / 128;
constexpr double kCorrectedError = kSoundRate / 500.0;
/// Below three times that error, the pitch changes by a quarter of what is possible: 570 ppm are inaudible.
constexpr int kChunksPerGentleCorrection = 4;
/// An alignment begins at the first time stamp, which may be inaccurate, and is then moved by the median of this many.
constexpr std::size_t kChunksToBegin = 20;
constexpr std::int64_t kJump = kSoundRate / 50;
/// A jump counts when it lasts, so that one late time stamp makes no gap; a jump of a quarter of a second counts at
/// once.
constexpr int kJumpsBelieved = 5;
constexpr std::int64_t kGreatJump = kSoundRate / 4;

std::int64_t frameAt(Nanoseconds time)
{
    const std::int64_t seconds = time.count() / kNanosecondsPerSecond;
    const std::int64_t rest = time.count() % kNanosecondsPerSecond;
    return seconds * kSoundRate + (rest * kSoundRate + kNanosecondsPerSecond / 2) / kNanosecondsPerSecond;
}

/// Difference between the time and the frame's time, in frames.
double framesPast(Nanoseconds time, std::int64_t frame)
{
    const Nanoseconds frameTime{frame / kSoundRate * kNanosecondsPerSecond
                                + frame % kSoundRate * kNanosecondsPerSecond / kSoundRate};
    return static_cast<double>((time - frameTime).count()) * kSoundRate / kNanosecondsPerSecond;
}

std::int64_t frameCount(std::span<const std::int16_t> samples)
{
    return static_cast<std::int64_t>(samples.size() / kSoundChannels);
}

std::ptrdiff_t sampleOffset(std::int64_t frames)
{
    return static_cast<std::ptrdiff_t>(frames) * static_cast<std::ptrdiff_t>(kSoundChannels);
}

/// Finds the frame, never the last one, that differs least from the next: one frame more or less is least audible
/// there.
std::size_t smoothestFrame(std::span<const std::int16_t> samples)
{
    std::size_t best = 0;
    int least = std::numeric_limits<int>::max();
    for (std::size_t i = 0; i + 2 * kSoundChannels <= samples.size(); i += kSoundChannels) {
        const int step = std::abs(samples[i] - samples[i + 2]) + std::abs(samples[i + 1] - samples[i + 3]);
        if (step < least) {
            least = step;
            best = i / kSoundChannels;
        }
    }
    return best;
}

/// Adds one frame (change 1) or removes one (-1): a mean of two neighbours is inserted, or replaces them.
void changeByOneFrame(std::span<const std::int16_t> samples, int change, std::vector<std::int16_t>& out)
{
    const std::size_t at = smoothestFrame(samples) * kSoundChannels;
    const std::size_t before = change > 0 ? at + kSoundChannels : at;
    const std::size_t after = change > 0 ? before : at + 2 * kSoundChannels;
    out.assign(samples.begin(), samples.begin() + static_cast<std::ptrdiff_t>(before));
    for (std::size_t channel = 0; channel < kSoundChannels; ++channel)
        out.push_back(static_cast<std::int16_t>((samples[at + channel] + samples[at + kSoundChannels + channel]) / 2));
    out.insert(out.end(), samples.begin() + static_cast<std::ptrdiff_t>(after), samples.end());
}

} // namespace

void SoundTimeline::record(Nanoseconds from)
{
    if (isRecording())
        return;
    recordedSince_ = from;
    intervals_.push_back({.begin = frameAt(from), .end = kOpen, .fileBegin = frameAt(recorded_)});
}

void SoundTimeline::pause(Nanoseconds at)
{
    if (!isRecording())
        return;
    recorded_ += std::max(at - recordedSince_, 0ns);
    Interval& last = intervals_.back();
    last.end = last.begin + frameAt(recorded_) - last.fileBegin;
}

std::int64_t SoundTimeline::length() const
{
    return frameAt(recorded_);
}

bool SoundTimeline::isRecording() const
{
    return !intervals_.empty() && intervals_.back().end == kOpen;
}

bool SoundTimeline::isHeardToTheEnd() const
{
    return !isRecording() && (intervals_.empty() || pendingEnd() >= intervals_.back().end);
}

void SoundTimeline::add(const SoundChunk& chunk)
{
    if (frameCount(chunk.samples) < 2)
        return;
    const double error = framesPast(chunk.capturedAt, next_);
    const bool jump = std::abs(error) > kJump;
    jumps_ = jump ? jumps_ + 1 : 0;
    std::span<const std::int16_t> samples = chunk.samples;
    if (!aligned_ || chunk.continuity == SoundContinuity::AfterGap || jumps_ >= kJumpsBelieved
        || std::abs(error) > kGreatJump) {
        begin(frameAt(chunk.capturedAt));
    } else if (firstErrors_.size() < kChunksToBegin) {
        placeBeginning(error);
    } else if (const int change = jump ? 0 : correction(error)) {
        changeByOneFrame(samples, change, corrected_);
        samples = corrected_;
    }
    store(next_, samples);
    next_ += frameCount(samples);
}

void SoundTimeline::begin(std::int64_t frame)
{
    aligned_ = true;
    next_ = frame;
    begun_ = frame;
    firstErrors_.clear();
    meanError_ = 0;
    jumps_ = 0;
}

/// Moves the chunks since the alignment began, which are not decided yet, by the median of their errors.
void SoundTimeline::placeBeginning(double error)
{
    firstErrors_.push_back(error);
    if (firstErrors_.size() < kChunksToBegin)
        return;
    const auto median = firstErrors_.begin() + kChunksToBegin / 2;
    std::nth_element(firstErrors_.begin(), median, firstErrors_.end());
    if (std::abs(*median) < kCorrectedError / 2)
        return;
    const std::int64_t shift = std::llround(*median);
    const std::int64_t first = std::clamp(begun_, pendingBegin_, pendingEnd());
    const std::vector<std::int16_t> sound(pending_.begin() + sampleOffset(first - pendingBegin_), pending_.end());
    pending_.resize(static_cast<std::size_t>(sampleOffset(first - pendingBegin_)));
    store(first + shift, sound);
    next_ += shift;
    jumps_ = 0;
}

/// 1 or -1 to add or remove one frame of the chunk, else 0.
int SoundTimeline::correction(double error)
{
    meanError_ += (error - meanError_) * kAveraging;
    ++uncorrected_;
    const double size = std::abs(meanError_);
    if (size < kCorrectedError || (size < 3 * kCorrectedError && uncorrected_ < kChunksPerGentleCorrection))
        return 0;
    const int change = meanError_ > 0 ? 1 : -1;
    meanError_ -= change;
    uncorrected_ = 0;
    ++corrections_;
    return change;
}

void SoundTimeline::soundLost()
{
    aligned_ = false;
}

void SoundTimeline::store(std::int64_t begin, std::span<const std::int16_t> samples)
{
    if (pending_.empty())
        pendingBegin_ = std::max(begin, decided_);
    const std::int64_t end = begin + frameCount(samples);
    if (end <= pendingEnd() || end - pendingBegin_ > kMostPending)
        return;
    const std::int64_t known = std::max<std::int64_t>(pendingEnd() - begin, 0);
    const std::int64_t gap = std::max<std::int64_t>(begin - pendingEnd(), 0);
    pending_.insert(pending_.end(), static_cast<std::size_t>(sampleOffset(gap)), 0);
    pending_.insert(pending_.end(), samples.begin() + sampleOffset(known), samples.end());
}

std::int64_t SoundTimeline::pendingEnd() const
{
    return pendingBegin_ + frameCount(pending_);
}

void SoundTimeline::advance(Nanoseconds now, std::vector<std::int16_t>& out)
{
    std::int64_t until = frameAt(now - kSettling);
    if (aligned_ && pendingEnd() < until)
        until = std::max(pendingEnd(), frameAt(now - kPatience));
    decide(until, out);
}

void SoundTimeline::finish(std::vector<std::int16_t>& out)
{
    if (!intervals_.empty() && !isRecording())
        decide(intervals_.back().end, out);
}

void SoundTimeline::decide(std::int64_t until, std::vector<std::int16_t>& out)
{
    // Also when nothing new is decided: record() or pause() may have been called later than the settling time.
    until = std::max(until, decided_);
    decided_ = until;
    for (const Interval& interval : intervals_) {
        const std::int64_t begin = interval.begin + (written_ - interval.fileBegin);
        const std::int64_t end = std::min(interval.end, until);
        if (begin < end)
            emitFrames(begin, end, out);
    }
    while (!intervals_.empty() && intervals_.front().end <= until)
        intervals_.pop_front();
    const std::int64_t past = std::clamp<std::int64_t>(until - pendingBegin_, 0, frameCount(pending_));
    pending_.erase(pending_.begin(), pending_.begin() + sampleOffset(past));
    pendingBegin_ += past;
}

void SoundTimeline::emitFrames(std::int64_t begin, std::int64_t end, std::vector<std::int16_t>& out)
{
    const std::int64_t heardBegin = std::clamp(pendingBegin_, begin, end);
    const std::int64_t heardEnd = std::clamp(pendingEnd(), heardBegin, end);
    out.insert(out.end(), static_cast<std::size_t>(sampleOffset(heardBegin - begin)), 0);
    if (heardBegin < heardEnd)
        out.insert(out.end(), pending_.begin() + sampleOffset(heardBegin - pendingBegin_),
                   pending_.begin() + sampleOffset(heardEnd - pendingBegin_));
    out.insert(out.end(), static_cast<std::size_t>(sampleOffset(end - heardEnd)), 0);
    written_ += end - begin;
}

} // namespace lumavex
