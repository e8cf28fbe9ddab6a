// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/ScreenOverlay.h"

#include <memory>

namespace lumavex {

/// The overlay services of the X server that shows the program's own windows. To be created after QGuiApplication. When
/// the windows are not on an X server, translucent windows count as blended, and the other services do nothing.
std::unique_ptr<ScreenOverlay> createX11Overlay();

} // namespace lumavex
