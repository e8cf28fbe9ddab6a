// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/ScreenOverlay.h"

#include <memory>

namespace lumavex {

/// The overlay services of the X server that the program's own windows are on. Made after QGuiApplication. Where the
/// windows are on no X server, translucent windows count as blended, and the other services do nothing.
std::unique_ptr<ScreenOverlay> createX11Overlay();

} // namespace lumavex
