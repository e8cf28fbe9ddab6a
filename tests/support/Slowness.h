// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

#include <algorithm>

namespace lumavex {

/// Factor for the time-outs of tests under a sanitizer, which slows the program down; 1 without one.
inline int slowness()
{
    return std::max(1, qEnvironmentVariableIntValue("LUMAVEX_TEST_SLOWNESS"));
}

} // namespace lumavex
