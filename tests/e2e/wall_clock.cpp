// SPDX-License-Identifier: GPL-3.0-or-later
// Preloaded into a program, sets the wall clock it reads back by an hour, three seconds after it was first read.
#include <ctime>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

constexpr time_t kAfterSeconds = 3;
constexpr time_t kSetBackSeconds = 3600;

timespec systemTime(clockid_t clock)
{
    timespec time{};
    syscall(SYS_clock_gettime, clock, &time); // the library's own function is the one replaced here
    return time;
}

timespec wallTime(clockid_t clock)
{
    static const time_t begun = systemTime(CLOCK_MONOTONIC).tv_sec;
    timespec time = systemTime(clock);
    if (systemTime(CLOCK_MONOTONIC).tv_sec - begun >= kAfterSeconds)
        time.tv_sec -= kSetBackSeconds;
    return time;
}

} // namespace

extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept
{
    *time = clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE ? wallTime(clock) : systemTime(clock);
    return 0;
}

extern "C" int gettimeofday(timeval* __restrict time, void* __restrict) noexcept
{
    const timespec now = wallTime(CLOCK_REALTIME);
    time->tv_sec = now.tv_sec;
    time->tv_usec = now.tv_nsec / 1000;
    return 0;
}

extern "C" time_t time(time_t* result) noexcept
{
    const time_t now = wallTime(CLOCK_REALTIME).tv_sec;
    if (result)
        *result = now;
    return now;
}
