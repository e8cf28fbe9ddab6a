// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/options/LaunchOptions.h"

namespace lumavex {

/// Adds the options that the given ones imply. Returns the contradictions between options as text for the user; empty
/// when there are none.
QString completeOptions(LaunchOptions& options);

} // namespace lumavex
