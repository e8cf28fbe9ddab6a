// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/sound/CaptureClock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace lumavex {
namespace {

using namespace std::chrono_literals;

/// Times of a stream that begins at 1000 s on the monotonic clock, in chunks of 10 ms.
struct Stream {
    Nanoseconds latency = 40ms;
    double ppm = 0;                 ///< by which the device is slow
    double clockPpm = 0;            ///< by which its clock, as reported, runs away from the sound
    Nanoseconds firstReading = 0ns; ///< what the first reading is off

    static constexpr Nanoseconds kOrigin = 1000s;

    /// The error of what the clock says after `chunks`, each delivered `late` later than it could be.
    template <typename Late>
    std::vector<Nanoseconds> errors(int chunks, Late late) const
    {
        CaptureClock clock;
        std::vector<Nanoseconds> result;
        Nanoseconds previous = 0ns;
        for (int i = 0; i < chunks; ++i) {
            const Nanoseconds end = (i + 1) * 10ms;
            const Nanoseconds heard = kOrigin + scaled(end, 1 + ppm * 1e-6);
            const Nanoseconds now = std::max(previous, heard + latency + late(i));
            previous = now;
            const Nanoseconds device =
                scaled(now - kOrigin, 1 - (ppm + clockPpm) * 1e-6) + (i == 0 ? firstReading : 0ns);
            result.push_back(clock.streamOrigin(now, end, device) + end - heard);
        }
        return result;
    }

private:
    static Nanoseconds scaled(Nanoseconds time, double by)
    {
        return Nanoseconds{static_cast<std::int64_t>(static_cast<double>(time.count()) * by)};
    }
};

Nanoseconds worst(const std::vector<Nanoseconds>& errors, std::size_t from)
{
    Nanoseconds result = 0ns;
    for (std::size_t i = from; i < errors.size(); ++i)
        result = std::max(result, std::chrono::abs(errors[i]));
    return result;
}

TEST(CaptureClockTest, LatencyIsTakenOff)
{
    const auto inTime = [](int) { return 0ns; };
    EXPECT_LT(worst(Stream{}.errors(1000, inTime), 0), 1us);
    EXPECT_LT(worst(Stream{.firstReading = -12ms}.errors(1000, inTime), 3), 1us);
    EXPECT_LT(worst(Stream{.latency = -40ms}.errors(1000, inTime), 0), 1us) << "a monitor that is ahead";
}

TEST(CaptureClockTest, DeviceThatDriftsIsFollowed)
{
    const auto inTime = [](int) { return 0ns; };
    for (const double ppm : {-1000.0, -100.0, 100.0, 1000.0})
        EXPECT_LT(worst(Stream{.ppm = ppm}.errors(60'000, inTime), 0), 500us + std::abs(ppm) * 7us) << ppm;
}

TEST(CaptureClockTest, ClockThatRunsAwayIsNotFollowed)
{
    EXPECT_LT(worst(Stream{.clockPpm = 44'000}.errors(6000, [](int) { return 0ns; }), 0), 5ms);
}

TEST(CaptureClockTest, BusyMachineChangesNothing)
{
    std::minstd_rand random(1);
    const auto blocks = [](int i) { return (4 - i % 5) * 2ms; };
    EXPECT_LT(worst(Stream{}.errors(1000, blocks), 0), 1ms);
    // Half of the chunks late by up to 30 ms, and the thread held up for 0.4 s at times, then a burst.
    const auto busy = [&random](int i) {
        return i % 300 > 200 && i % 300 <= 240 ? (241 - i % 300) * 10ms
                                               : static_cast<int>(random() % 2 * (random() % 30)) * 1ms;
    };
    EXPECT_LT(worst(Stream{}.errors(3000, busy), 0), 1ms);
}

TEST(CaptureClockTest, SoundThatWaitedForAStoppedProcessKeepsItsTime)
{
    const auto stopped = [](int i) { return i >= 400 && i < 900 ? (900 - i) * 10ms : 0ns; }; // then all at once
    EXPECT_LT(worst(Stream{}.errors(2500, stopped), 0), 1us);
    EXPECT_LT(worst(Stream{.ppm = 100}.errors(2500, stopped), 0), 2ms);
}

} // namespace
} // namespace lumavex
