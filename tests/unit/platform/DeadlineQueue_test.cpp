// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/fakes/FakeRunLoop.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

using namespace lumavex;
using namespace std::chrono_literals;

namespace {

struct RunLoopTest : testing::Test {
    FakeClock clock;
    FakeRunLoop loop{clock};
    std::string log;

    TimerId every(TimerInterval interval, char name, RunLoopMode mode = RunLoopMode::Common)
    {
        return loop.scheduleRepeating(interval, mode, [this, name](const TimerFiring&) { log += name; });
    }
};

} // namespace

TEST_F(RunLoopTest, AnHourOfThirtiethsCountsExactlyThirtyInEverySecond)
{
    int frames = 0;
    int wrongSeconds = 0;
    const TimerId view = loop.scheduleRepeating({1, 30}, RunLoopMode::Common, [&](const TimerFiring&) { ++frames; });
    loop.scheduleRepeating({1, 1}, RunLoopMode::Common, [&](const TimerFiring&) {
        wrongSeconds += frames != 30;
        frames = 0;
    });
    const Nanoseconds start = clock.time;
    for (int second = 0; second < 3600; ++second)
        second % 7 == 3 ? loop.stall(1s) : loop.advance(1s); // some seconds the machine is busy from end to end
    EXPECT_EQ(wrongSeconds, 0);
    EXPECT_EQ(loop.nextDeadline(view), start + 3600s + 33'333'333ns);
}

TEST_F(RunLoopTest, AtEqualDeadlinesOneShotTimersAreFirstThenTheTimersInTheOrderOfTheirStart)
{
    const TimerId second = every({1, 1}, 's');
    const TimerId grab = every({1, 2}, 'g');
    const TimerId view = every({1, 2}, 'v');
    for (const TimerId timer : {view, grab, second})
        loop.restart(timer, clock.time);
    loop.setNextDeadline(view, clock.time + 500ms);
    loop.scheduleOnce({1, 1}, [this](const TimerFiring&) { log += '1'; });
    loop.advance(1s);
    EXPECT_EQ(log, "gv1gsv");
}

TEST_F(RunLoopTest, OfTheTimersThatAreDueOnlyTheNamedOnesRun)
{
    const TimerId view = every({1, 10}, 'v');
    every({1, 10}, 'o');
    loop.scheduleOnce({1, 10}, [this](const TimerFiring&) { log += '1'; });
    clock.time += 250ms;
    loop.runDue(std::array{view, TimerId{0}}, clock.time);
    EXPECT_EQ(log, "vv");
    loop.advance(0ms);
    EXPECT_EQ(log, "vv1oo");
}

TEST_F(RunLoopTest, MissedCommonDeadlinesRunLateEachOnceInOrder)
{
    every({1, 2}, 'g');
    every({1, 2}, 'v');
    loop.stall(1600ms);
    EXPECT_EQ(log, "gvgvgv");
}

TEST_F(RunLoopTest, ADefaultModeTimerRestsWhileAModalWindowIsOpenAndThenRunsOnceInItsOldPhase)
{
    every({3, 1}, 'u', RunLoopMode::Default);
    every({5, 1}, 'c');
    loop.mode = RunLoopMode::Common;
    loop.advance(10s);
    EXPECT_EQ(log, "cc");
    loop.mode = RunLoopMode::Default;
    loop.advance(1ms);
    EXPECT_EQ(log, "ccu");
    loop.advance(1900ms);
    EXPECT_EQ(log, "ccu");
    loop.advance(100ms);
    EXPECT_EQ(log, "ccuu");
}

TEST_F(RunLoopTest, MovingADeadlineDropsWhatWasMissedAndKeepsTheInterval)
{
    const TimerId view = every({1, 10}, 'v');
    clock.time += 5s;
    loop.setNextDeadline(view, clock.time + 33ms);
    loop.advance(32ms);
    EXPECT_EQ(log, "");
    loop.advance(101ms);
    EXPECT_EQ(log, "vv");
}

TEST_F(RunLoopTest, CallbacksMayEndThemselvesAndStartOthersWhileTheQueueRuns)
{
    TimerId self = 0;
    self = loop.scheduleRepeating({1, 1}, RunLoopMode::Common, [&](const TimerFiring&) {
        log += 'x';
        loop.invalidate(self);
        every({1, 1}, 'y');
        loop.advance(0ms); // finds nothing else due and does not come back here
    });
    loop.advance(3s);
    EXPECT_EQ(log, "xyy");
}
