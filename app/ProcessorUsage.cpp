// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ProcessorUsage.h"

#include <algorithm>

namespace lumavex {

float processorUsage(const std::vector<std::int32_t>& cpuInfo, const std::vector<std::int32_t>& prevCpuInfo,
                     std::uint32_t numCPUs)
{
    // A processor that was switched off since start-up, or on since the previous sample, has no entries.
    const std::size_t numCpuInfo = cpuInfo.size();
    const std::size_t numPrevCpuInfo = prevCpuInfo.size();
    const auto ticks = [&](std::size_t i) {
        const auto now = static_cast<std::uint32_t>(cpuInfo[i]);
        const auto before = i < numPrevCpuInfo ? static_cast<std::uint32_t>(prevCpuInfo[i]) : 0U;
        return now - before;
    };
    float sum = 0;
    const std::size_t processors = std::min<std::size_t>(numCPUs, numCpuInfo / 4);
    for (std::size_t i = 0; i < processors; ++i) {
        const auto inUse =
            static_cast<float>(static_cast<std::int32_t>(ticks(4 * i) + ticks(4 * i + 1) + ticks(4 * i + 3)));
        const auto idle = static_cast<float>(static_cast<std::int32_t>(ticks(4 * i + 2)));
        if (inUse + idle != 0)
            sum += inUse / (idle + inUse);
    }
    const float half = numCPUs > 1 ? static_cast<float>(numCPUs >> 1) : 0.5F;
    return sum / half;
}

} // namespace lumavex
