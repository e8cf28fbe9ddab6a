// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/fake/FakeRunLoop.h"

#include <gtest/gtest.h>

#include <string>

using namespace lumavex;
using namespace std::chrono_literals;

namespace {

struct RunLoopTest : testing::Test {
    FakeClock clock;
    FakeRunLoop loop{clock};
    std::string log;

    TimerId every(TimerInterval interval, TimerOrder order, char name, RunLoopMode mode = RunLoopMode::Common)
    {
        return loop.scheduleRepeating(interval, mode, order, [this, name](const TimerFiring& firing) {
            log += name;
            if (firing.overtaken)
                log += '!';
        });
    }
};

} // namespace

TEST_F(RunLoopTest, AnHourOfThirtiethsCountsExactlyThirtyInEverySecond)
{
    int frames = 0;
    int wrongSeconds = 0;
    loop.scheduleRepeating({1, 1}, RunLoopMode::Common, TimerOrder::Second, [&](const TimerFiring&) {
        wrongSeconds += frames != 30;
        frames = 0;
    });
    const TimerId view =
        loop.scheduleRepeating({1, 30}, RunLoopMode::Common, TimerOrder::View, [&](const TimerFiring&) { ++frames; });
    const Nanoseconds start = clock.time;
    for (int second = 0; second < 3600; ++second)
        second % 7 == 3 ? loop.stall(1s) : loop.advance(1s); // some seconds the machine is busy from end to end
    EXPECT_EQ(wrongSeconds, 0);
    EXPECT_EQ(loop.nextDeadline(view), start + 3600s + 33'333'333ns);
}

TEST_F(RunLoopTest, EqualDeadlinesRunInTheOrderOfTheirKindWhateverTheOrderOfCreation)
{
    every({1, 1}, TimerOrder::Second, 's');
    every({1, 2}, TimerOrder::View, 'v');
    every({1, 2}, TimerOrder::Grab, 'g');
    loop.scheduleOnce({1, 1}, [this](const TimerFiring&) { log += '1'; });
    loop.advance(1s);
    EXPECT_EQ(log, "gv1gvs");
}

TEST_F(RunLoopTest, MissedCommonDeadlinesRunLateEachOnceInOrderAndSayThatTheyWereOvertaken)
{
    every({1, 2}, TimerOrder::Grab, 'g');
    every({1, 2}, TimerOrder::View, 'v');
    loop.stall(1600ms);
    EXPECT_EQ(log, "g!v!g!v!gv");
}

TEST_F(RunLoopTest, ADefaultModeTimerRestsWhileAModalWindowIsOpenAndThenRunsOnceInItsOldPhase)
{
    every({3, 1}, TimerOrder::Other, 'u', RunLoopMode::Default);
    every({5, 1}, TimerOrder::Other, 'c');
    loop.mode = RunLoopMode::Common;
    loop.advance(10s);
    EXPECT_EQ(log, "cc");
    loop.mode = RunLoopMode::Default;
    loop.advance(1ms);
    EXPECT_EQ(log, "ccu!");
    loop.advance(1900ms);
    EXPECT_EQ(log, "ccu!");
    loop.advance(100ms);
    EXPECT_EQ(log, "ccu!u");
}

TEST_F(RunLoopTest, MovingADeadlineDropsWhatWasMissedAndKeepsTheInterval)
{
    const TimerId view = every({1, 10}, TimerOrder::View, 'v');
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
    self = loop.scheduleRepeating({1, 1}, RunLoopMode::Common, TimerOrder::Other, [&](const TimerFiring&) {
        log += 'x';
        loop.invalidate(self);
        every({1, 1}, TimerOrder::Other, 'y');
        loop.runDue(clock.time); // finds nothing else due and does not come back here
    });
    loop.advance(3s);
    EXPECT_EQ(log, "xyy");
}
