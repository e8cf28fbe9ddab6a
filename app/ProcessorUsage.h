// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <vector>

namespace lumavex {

/// Above this load no recording is started and the user is told how to lower it.
inline constexpr double processorUsageLimit = 0.98;

/// The load of the machine: the busy fractions of `numCPUs` processors since the previous sample, summed, over half the
/// number of processors (rounded down; one processor counts as a divisor of 0.5). 1 means that half of all processors
/// were busy, 2 that all were. Samples hold four counters per processor: user, system, idle, nice; they are subtracted
/// in wrapping 32-bit arithmetic. An empty previous sample gives the load since the machine started. A processor that
/// counted no tick at all counts as idle.
float processorUsage(const std::vector<std::int32_t>& cpuInfo, const std::vector<std::int32_t>& prevCpuInfo,
                     std::uint32_t numCPUs);

} // namespace lumavex
