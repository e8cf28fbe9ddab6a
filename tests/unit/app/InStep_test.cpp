// SPDX-License-Identifier: GPL-3.0-or-later
// Picture and sound stay together over an hour of simulated time, whatever the machine does. The sound's time is the
// clock's; the picture's is what the rate rule makes of the frames it counts.
#include "tests/unit/app/Program.h"

#include <QAction>

#include <random>

using namespace lumavex;
using namespace std::chrono_literals;

namespace {

struct InStep : Program, testing::WithParamInterface<std::int32_t> {
    void record(std::int32_t rate)
    {
        ASSERT_TRUE(launch());
        app->recording.b_Record_Include_Audio = 1;
        app->capture.m_i_Screen_Capture_FPS = rate;
        app->recording.i_fps_of_Recording = app->nominalRate();
        app->createRefreshTimers();
        movie->setKeepsPictures(false);
        frame_ = 1.0 / rate;
        loop->advance(430ms); // at no particular phase of any timer
        window->btnRecord->trigger();
        origin_ = clock.time;
    }

    /// Lets the machine be so busy for a while that everything takes a part more of its time.
    void slowDown(Nanoseconds span, double speed)
    {
        const auto step = Nanoseconds(static_cast<std::int64_t>(frame_ * 1e9 / speed));
        for (Nanoseconds passed{0}; passed < span; passed += step)
            loop->stall(step);
    }

    /// By how many seconds the picture's time is ahead of the sound's. The next frame's time is due within a frame.
    double pictureAhead() const
    {
        const double heard = std::chrono::duration<double>(clock.time - origin_ - pauses_).count();
        return CMTimeGetSeconds(app->recording.m_Current_Video_Frame) - heard;
    }

    void expectInStep(double tolerance)
    {
        const double ahead = pictureAhead();
        EXPECT_GT(ahead, -tolerance) << "after " << (clock.time - origin_) / 1ms << " ms";
        EXPECT_LT(ahead, frame_ + tolerance) << "after " << (clock.time - origin_) / 1ms << " ms";
    }

    void stopAndCompare()
    {
        window->btnStop->trigger();
        const auto appends = movie->appends();
        ASSERT_FALSE(appends.empty());
        EXPECT_GT(CMTimeGetSeconds(appends.front().time), 0);
        for (std::size_t i = 1; i < appends.size(); ++i)
            ASSERT_GT(CMTimeCompare(appends[i].time, appends[i - 1].time), 0) << "frame " << i;
        const double heard = std::chrono::duration<double>(sound->recordings.back()->recorded).count();
        EXPECT_LE(std::abs(movie->seconds() - heard), frame_ + 1e-6);
    }

    double frame_ = 0;
    Nanoseconds origin_{0};
    Nanoseconds pauses_{0};
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Rates, InStep, testing::Values(10, 24, 30, 60));

TEST_P(InStep, SteadyLoadForAnHourIsLessThanAFrame)
{
    record(GetParam());
    for (int minute = 0; minute < 60; ++minute) {
        loop->advance(60s - 7ms);
        expectInStep(GetParam() < 30 ? frame_ : 1e-6); // slow rates begin at 1/30 s instead of one interval
        loop->advance(7ms);
    }
    stopAndCompare();
}

struct InStepUnderLoad : InStep {};
INSTANTIATE_TEST_SUITE_P(Rates, InStepUnderLoad, testing::Values(30));

TEST_P(InStepUnderLoad, SlowSecondsAndStallsForAnHourLoseNothing)
{
    record(30);
    std::minstd_rand random(7);
    for (int second = 0; clock.time - origin_ < 3600s; ++second) {
        if (second % 10 == 3) {
            slowDown(1s, 0.6);
        } else if (random() % 40 == 0) {
            loop->stall(Nanoseconds(static_cast<std::int64_t>(random() % 3'000'000'000ULL))); // a disk, a swap
        } else {
            loop->advance(1s);
        }
        expectInStep(0.020);
    }
    stopAndCompare();
}

TEST_P(InStepUnderLoad, AStoppedProcessAndAJumpOfTheClockAreCaughtUpWith)
{
    record(30);
    for (const Nanoseconds jump : {2s, 17s, 601s}) {
        loop->advance(2300ms);
        loop->stall(jump); // nothing runs, then everything that was due
        expectInStep(0.020);
        loop->advance(900ms);
        window->btnPause->trigger();
        const Nanoseconds paused = clock.time;
        loop->stall(jump);
        loop->advance(300ms);
        pauses_ += clock.time - paused;
        window->btnRecord->trigger();
        loop->advance(100ms);
        expectInStep(0.020);
    }
    stopAndCompare();
}

TEST_P(InStepUnderLoad, StopInTheMiddleOfAStallKeepsTheLengthsEqual)
{
    record(30);
    loop->advance(1700ms);
    clock.time += 2345ms; // Stop is the first thing that runs again
    stopAndCompare();
}

TEST_P(InStepUnderLoad, AClockThatGoesBackRepeatsNoTime)
{
    record(30);
    loop->advance(3s);
    clock.time -= 2s;
    loop->advance(5s);
    window->btnStop->trigger();
    const auto appends = movie->appends();
    for (std::size_t i = 1; i < appends.size(); ++i)
        ASSERT_GT(CMTimeCompare(appends[i].time, appends[i - 1].time), 0) << "frame " << i;
    EXPECT_EQ(appends.size(), 180u) << "time that was shown already is not shown again";
}
