// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/ProcessorLoad.h"

#include <string>

namespace lumavex {

/// The counters of /proc/stat (proc(5)). Interrupt and stolen time count as system time, I/O wait counts as idle.
class ProcStatLoad final : public ProcessorLoad {
public:
    explicit ProcStatLoad(std::string path = "/proc/stat");
    std::uint32_t processorCount() const override;
    std::optional<std::vector<std::int32_t>> sample() override;

private:
    std::string path_;
};

} // namespace lumavex
