// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/ScreenGrabber.h"
#include "platform/x11/XcbConnection.h"

#include <cstdint>
#include <span>
#include <vector>

namespace lumavex {

/// Title and icon of each window (EWMH _NET_WM_NAME and _NET_WM_ICON, ICCCM WM_NAME), as ScreenGrabber::looksOf tells.
/// All are asked in one round trip.
std::vector<WindowLook> looksOfWindows(const XcbConnection& connection, const std::vector<std::uint32_t>& windows,
                                       int iconSize);

/// The icon for `size` pixels out of the words of a _NET_WM_ICON: for each icon width, height and rows of pixels, not
/// premultiplied. Null when there is none. What does not hold together ends the list.
QImage iconOfWords(std::span<const std::uint32_t> words, int size);

} // namespace lumavex
