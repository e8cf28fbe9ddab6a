// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/ChangedArea.h"
#include "platform/x11/XcbConnection.h"

#include <QRect>

#include <optional>

namespace lumavex {

/// The part of a server-side region inside the rectangle, relative to the rectangle's corner. std::nullopt when the
/// server does not answer. One round trip.
std::optional<ChangedArea> fetchArea(const XcbConnection& connection, xcb_xfixes_region_t region, const QRect& within);

} // namespace lumavex
