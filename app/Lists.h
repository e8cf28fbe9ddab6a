// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/options/LaunchOptions.h"
#include "platform/Platform.h"

namespace lumavex {

/// Prints the cameras, windows or sizes, one per line, to standard output; returns the exit status.
int printList(LaunchOptions::List what, Platform& platform);

} // namespace lumavex
