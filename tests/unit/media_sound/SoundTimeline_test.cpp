// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/sound/SoundTimeline.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <random>

namespace lumavex {
namespace {

using namespace std::chrono_literals;

/// A day after the machine's start, at no round frame.
constexpr Nanoseconds kStart = 86'400s + 123'456'789ns;
constexpr std::int64_t kChunk = 441;

std::int64_t framesIn(Nanoseconds time)
{
    return std::llround(static_cast<double>(time.count()) * kSoundRate / 1e9);
}

/// A device whose frames carry the time they were heard at (since kStart, in units of 1/10 ms), with all the faults
/// that devices have.
struct Device {
    double ppm = 0;              ///< by which it runs fast
    Nanoseconds jitter = 0ns;    ///< of its stamps, to both sides
    Nanoseconds begins = kStart; ///< when its first frame is heard

    SoundChunk next()
    {
        samples_.clear();
        for (std::int64_t i = 0; i < kChunk; ++i) {
            const auto tick = static_cast<int>((timeOf(frame_ + i) - kStart) / 100us) + 1;
            samples_.push_back(static_cast<std::int16_t>(tick / 10000));
            samples_.push_back(static_cast<std::int16_t>(tick % 10000));
        }
        SoundChunk chunk{.capturedAt = timeOf(frame_), .samples = samples_};
        if (jitter > 0ns)
            chunk.capturedAt +=
                Nanoseconds{std::uniform_int_distribution<std::int64_t>(-jitter.count(), jitter.count())(random_)};
        frame_ += kChunk;
        return chunk;
    }
    Nanoseconds heardUpTo() const { return timeOf(frame_); }
    void skip(Nanoseconds time) { frame_ += framesIn(time); }

    Nanoseconds timeOf(std::int64_t frame) const
    {
        return begins + Nanoseconds{std::llround(static_cast<double>(frame) * 1e9 / (kSoundRate * (1 + ppm * 1e-6)))};
    }
    std::int64_t frame_ = 0;
    std::vector<std::int16_t> samples_{};
    std::minstd_rand random_{1};
};

class SoundTimelineTest : public ::testing::Test {
protected:
    /// The device plays up to the time; the file is written as it goes.
    void playTo(Nanoseconds end)
    {
        while (device_.heardUpTo() < end) {
            timeline_.add(device_.next());
            timeline_.advance(device_.heardUpTo(), file_);
        }
    }

    /// The same, and the end of the recording then; the device goes on for a second, whose sound may be needed.
    void pauseAt(Nanoseconds end)
    {
        playTo(end);
        timeline_.pause(end);
        playTo(end + 1s);
        timeline_.finish(file_);
    }
    void startAnew(const Device& device)
    {
        device_ = device;
        timeline_ = {};
        file_.clear();
    }

    std::int64_t frames() const { return static_cast<std::int64_t>(file_.size() / 2); }

    /// When the file's frame was heard; null for silence.
    std::optional<Nanoseconds> heardAt(std::int64_t frame) const
    {
        const auto at = static_cast<std::size_t>(2 * frame);
        const int tick = file_[at] * 10000 + file_[at + 1];
        return tick == 0 ? std::nullopt : std::optional(kStart + (tick - 1) * 100us);
    }

    /// The greatest distance between where frames of the file [begin, end) should have been heard and where they were.
    Nanoseconds worstError(std::int64_t begin, std::int64_t end, Nanoseconds from) const
    {
        Nanoseconds worst = 0ns;
        for (std::int64_t i = begin; i < end; ++i) {
            const auto heard = heardAt(i);
            if (!heard)
                return Nanoseconds::max();
            const Nanoseconds expected = from + (i - begin) * 1'000'000'000ns / kSoundRate;
            worst = std::max(worst, std::chrono::abs(*heard + 50us - expected));
        }
        return worst;
    }

    std::int64_t silentFrames(std::int64_t begin, std::int64_t end) const
    {
        std::int64_t count = 0;
        for (std::int64_t i = begin; i < end; ++i)
            count += !heardAt(i);
        return count;
    }

    Device device_;
    SoundTimeline timeline_;
    std::vector<std::int16_t> file_;
};

TEST_F(SoundTimelineTest, BeginsWithSilenceUntilTheDeviceBegins)
{
    device_.begins = kStart + 300ms;
    timeline_.record(kStart);
    pauseAt(kStart + 1500ms);
    EXPECT_EQ(frames(), 66150);
    EXPECT_EQ(silentFrames(0, frames()), 13230);
    EXPECT_LE(worstError(13230, frames(), kStart + 300ms), 100us);
}

TEST_F(SoundTimelineTest, PausesAreCutToTheFrameAndRoundingDoesNotAddUp)
{
    struct Span {
        Nanoseconds from;
        Nanoseconds at;
    };
    // Each length ends a little below half a frame.
    const Span spans[] = {{1s, 2s + 10us}, {2500ms + 7us, 2900ms + 18us}, {2900ms + 30us, 4s + 41us}, {7s, 7s + 11us}};
    Nanoseconds recorded = 0ns;
    for (const auto& [from, at] : spans) {
        playTo(kStart + from);
        timeline_.record(kStart + from);
        timeline_.record(kStart + from + 5ms); // already recording
        playTo(kStart + at);
        timeline_.pause(kStart + at);
        timeline_.pause(kStart + at + 5ms); // already paused
        recorded += at - from;
    }
    playTo(kStart + 8s);
    EXPECT_TRUE(timeline_.isHeardToTheEnd());
    timeline_.finish(file_);

    EXPECT_EQ(frames(), framesIn(recorded));
    EXPECT_EQ(timeline_.framesWritten(), frames());
    Nanoseconds before = 0ns;
    for (const auto& [from, at] : spans) {
        EXPECT_LE(worstError(framesIn(before), framesIn(before + at - from), kStart + from), 100us) << from.count();
        before += at - from;
    }
}

TEST_F(SoundTimelineTest, DriftIsCorrectedFrameByFrame)
{
    for (const double ppm : {-1000.0, -50.0, 50.0, 1000.0}) {
        startAnew({.ppm = ppm});
        timeline_.record(kStart);
        pauseAt(kStart + 60s);
        EXPECT_EQ(frames(), 60 * kSoundRate) << ppm;
        EXPECT_EQ(silentFrames(0, frames()), 0) << ppm;
        EXPECT_LT(worstError(0, frames(), kStart), 10ms) << ppm;
        // The value without corrections, within the tolerated error.
        EXPECT_NEAR(static_cast<double>(timeline_.corrections()), std::abs(61 * kSoundRate * ppm * 1e-6), 10 * 44.1)
            << ppm;
    }
}

TEST_F(SoundTimelineTest, JitterOfStampsAndSingleLateOnesChangeNothing)
{
    device_.jitter = 5ms;
    timeline_.record(kStart + 1s);
    playTo(kStart + 10s);
    SoundChunk late = device_.next();
    late.capturedAt += 100ms;
    timeline_.add(late);
    pauseAt(kStart + 30s);
    EXPECT_EQ(timeline_.corrections(), 0);
    ASSERT_EQ(frames(), 29 * kSoundRate);
    EXPECT_LT(worstError(0, frames(), kStart + 1s), 6ms);
    // Unbroken: a tenth of a millisecond has four or five frames.
    for (std::int64_t i = 0; i + 5 < frames(); ++i)
        ASSERT_LE(*heardAt(i + 5) - *heardAt(i), 200us) << i;
}

TEST_F(SoundTimelineTest, LostSoundLeavesSilenceAndTheRestInPlace)
{
    for (const bool flagged : {true, false}) {
        startAnew({});
        timeline_.record(kStart);
        playTo(kStart + 1s);
        device_.skip(100ms);
        if (flagged) {
            SoundChunk chunk = device_.next();
            chunk.continuity = SoundContinuity::AfterGap;
            timeline_.add(chunk);
        }
        pauseAt(kStart + 2s);
        EXPECT_EQ(frames(), 2 * kSoundRate);
        EXPECT_LE(worstError(0, kSoundRate, kStart), 100us);
        EXPECT_NEAR(static_cast<double>(silentFrames(0, frames())), 4410, 1) << flagged;
        // Unflagged, the jump is believed when four chunks have gone into the hole.
        EXPECT_LE(worstError(kSoundRate + 4410 + 4 * kChunk, frames(), kStart + 1140ms), 150us) << flagged;
    }
}

TEST_F(SoundTimelineTest, SoundStampedBackIsNotHeardTwice)
{
    timeline_.record(kStart);
    playTo(kStart + 1s);
    device_.skip(-300ms);
    pauseAt(kStart + 2s);
    EXPECT_EQ(frames(), 2 * kSoundRate);
    EXPECT_LE(worstError(0, frames(), kStart), 100us);
}

TEST_F(SoundTimelineTest, CallsMayBeLateAndSoundEarly)
{
    playTo(kStart + 1s);
    timeline_.record(kStart + 700ms);
    playTo(kStart + 2s);
    timeline_.pause(kStart + 1700ms);
    // The sound of 60 ms to come is there before the call that resumes now.
    for (int i = 0; i < 6; ++i)
        timeline_.add(device_.next());
    timeline_.record(kStart + 2s);
    pauseAt(kStart + 3s);
    EXPECT_EQ(frames(), 2 * kSoundRate);
    EXPECT_LE(worstError(0, kSoundRate, kStart + 700ms), 100us);
    EXPECT_LE(worstError(kSoundRate, frames(), kStart + 2s), 100us);
}

TEST_F(SoundTimelineTest, FirstStampsThatAreOffMoveTheBeginningAsAWhole)
{
    for (const Nanoseconds off : {18ms, -18ms}) {
        startAnew({.begins = kStart + 200ms});
        timeline_.record(kStart);
        for (int i = 0; i < 6; ++i) {
            SoundChunk chunk = device_.next();
            chunk.capturedAt += off;
            timeline_.add(chunk);
        }
        pauseAt(kStart + 2s);
        EXPECT_EQ(silentFrames(0, frames()), 8820);
        EXPECT_LE(worstError(8820, frames(), kStart + 200ms), 100us);
    }
}

TEST_F(SoundTimelineTest, LengthIsRightEvenWhenCallsAreTooLate)
{
    timeline_.advance(kStart + 5s, file_);
    timeline_.record(kStart + 1s);
    timeline_.pause(kStart + 2s);
    timeline_.finish(file_);
    EXPECT_EQ(frames(), kSoundRate);
    EXPECT_EQ(silentFrames(0, frames()), kSoundRate);

    timeline_.record(kStart + 6s);
    timeline_.advance(kStart + 9s, file_);
    timeline_.pause(kStart + 7s);
    timeline_.finish(file_);
    EXPECT_EQ(timeline_.framesWritten(), frames());
    EXPECT_EQ(timeline_.length(), 2 * kSoundRate) << "what the file is to be cut to";
}

TEST_F(SoundTimelineTest, SilenceGrowsWithTheTime)
{
    timeline_.record(kStart);
    timeline_.advance(kStart + 3s, file_);
    EXPECT_EQ(frames(), framesIn(2500ms)) << "nothing was ever heard";

    device_.skip(3s);
    playTo(kStart + 4s);
    const std::int64_t before = frames();
    timeline_.advance(device_.heardUpTo() + 1900ms, file_);
    EXPECT_EQ(frames(), framesIn(device_.heardUpTo() - kStart)) << "late sound is waited for";
    EXPECT_GT(frames(), before);
    timeline_.soundLost();
    timeline_.advance(kStart + 6s, file_);
    EXPECT_EQ(frames(), framesIn(5500ms)) << "but not when it is lost";
    EXPECT_EQ(silentFrames(0, frames()), framesIn(4500ms));
}

TEST_F(SoundTimelineTest, KeepsSoundWithinBounds)
{
    timeline_.record(kStart);
    for (int i = 0; i < 3000; ++i) // half a minute in which nothing is written
        timeline_.add(device_.next());
    timeline_.pause(kStart + 30s);
    timeline_.finish(file_);
    EXPECT_EQ(frames(), 30 * kSoundRate);
    EXPECT_EQ(silentFrames(0, frames()), 22 * kSoundRate);
}

} // namespace
} // namespace lumavex
