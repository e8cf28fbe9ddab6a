// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/x11/XcbConnection.h"

namespace lumavex {

/// True when the server is the one that a Wayland session runs for X11 programs. It holds only the pixels of their
/// windows, and its root window, which represents the screen, stays black. False without a connection. Main thread.
bool isXWayland(const XcbConnection& connection);

} // namespace lumavex
