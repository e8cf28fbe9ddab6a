// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace lumavex {

/// The load counters of the machine's processors. Main thread.
class ProcessorLoad {
public:
    virtual ~ProcessorLoad() = default;
    /// 1 when the system does not report it.
    virtual std::uint32_t processorCount() const = 0;
    /// Ticks since the machine started, four per processor: user, system, idle, nice. std::nullopt when the system
    /// refuses.
    virtual std::optional<std::vector<std::int32_t>> sample() = 0;
};

} // namespace lumavex
