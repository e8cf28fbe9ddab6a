// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/ProcessorLoad.h"

namespace lumavex {

/// Counters set by the test.
class FakeProcessorLoad final : public ProcessorLoad {
public:
    std::uint32_t processorCount() const override { return static_cast<std::uint32_t>(counters.size() / 4); }
    std::optional<std::vector<std::int32_t>> sample() override { return counters; }

    std::vector<std::int32_t> counters = {0, 0, 100, 0, 0, 0, 100, 0};
};

} // namespace lumavex
