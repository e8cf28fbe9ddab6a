// SPDX-License-Identifier: GPL-3.0-or-later
#include "recording/RateRule.h"

#include <algorithm>
#include <limits>

namespace lumavex {

std::int32_t adaptedRate(std::int32_t nominal, std::int64_t appended, std::int32_t previous)
{
    const std::int64_t rate = nominal / 8 > appended ? nominal : appended;
    if (rate <= 0)
        return std::max(previous, 1);
    return static_cast<std::int32_t>(std::min<std::int64_t>(rate, std::numeric_limits<std::int32_t>::max()));
}

} // namespace lumavex
