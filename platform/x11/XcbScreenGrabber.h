// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/ScreenGrabber.h"

#include <memory>

namespace lumavex {

/// Grabs from the X server of $DISPLAY, over a connection of its own. Never null: without a server, or with a screen
/// that cannot be recorded, `trouble` says so and nothing is ever grabbed.
std::unique_ptr<ScreenGrabber> createXcbScreenGrabber();

} // namespace lumavex
