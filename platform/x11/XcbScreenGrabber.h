// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/ScreenGrabber.h"

#include <memory>

namespace lumavex {

/// Grabs from the X server of $DISPLAY through its own connection. Never null: without a server, or with a screen that
/// cannot be recorded, `trouble` returns the reason and every grab fails.
std::unique_ptr<ScreenGrabber> createXcbScreenGrabber();

} // namespace lumavex
