// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <vector>

namespace lumavex {

/// Above this load the program refuses to record and tells the user how to lower the load.
inline constexpr double processorUsageLimit = 0.98;

/// The load of the machine: the sum of the busy fractions of `numCPUs` processors since the previous sample, divided by
/// half the number of processors (rounded down; the divisor for one processor is 0.5). 1 means that half of all
/// processors were busy, 2 that all were. Samples hold four counters per processor: user, system, idle, nice; they are
/// subtracted in wrapping 32-bit arithmetic. An empty previous sample yields the load since the machine started. A
/// processor whose counters did not change counts as idle.
float processorUsage(const std::vector<std::int32_t>& cpuInfo, const std::vector<std::int32_t>& prevCpuInfo,
                     std::uint32_t numCPUs);

} // namespace lumavex
