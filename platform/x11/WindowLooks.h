// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/ScreenGrabber.h"
#include "platform/x11/XcbConnection.h"

#include <cstdint>
#include <span>
#include <vector>

namespace lumavex {

/// Title and icon of each window (EWMH _NET_WM_NAME and _NET_WM_ICON, ICCCM WM_NAME), as specified for
/// ScreenGrabber::looksOf. All are requested in one round trip.
std::vector<WindowLook> looksOfWindows(const XcbConnection& connection, const std::vector<std::uint32_t>& windows,
                                       int iconSize);

/// Chooses the icon for `size` pixels from the words of a _NET_WM_ICON: for each icon width, height and rows of
/// non-premultiplied pixels. Null when there is none. An inconsistent entry ends the list.
QImage iconOfWords(std::span<const std::uint32_t> words, int size);

} // namespace lumavex
