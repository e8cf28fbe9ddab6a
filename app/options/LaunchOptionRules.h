// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/options/LaunchOptions.h"

namespace lumavex {

/// Completes the options by what those given imply. What of them does not go together, in the user's words; empty when
/// they do.
QString completeOptions(LaunchOptions& options);

} // namespace lumavex
