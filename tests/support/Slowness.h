// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

#include <algorithm>

namespace lumavex {

/// By how much longer than usual a test waits for something, since a sanitizer slows the program down; 1 without one.
inline int slowness()
{
    return std::max(1, qEnvironmentVariableIntValue("LUMAVEX_TEST_SLOWNESS"));
}

} // namespace lumavex
