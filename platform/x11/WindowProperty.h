// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/x11/XcbHandles.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <span>

namespace lumavex {

/// The server's reply about a property of a window; null when the window is gone.
using PropertyReply = XcbOwned<xcb_get_property_reply_t>;

/// The values of a property of that format (8 or 32 bits); none if the reply is null or the format another.
template <typename Value>
std::span<const Value> valuesOf(const PropertyReply& property)
{
    if (!property || property->format != 8 * sizeof(Value))
        return {};
    return {static_cast<const Value*>(xcb_get_property_value(property.get())),
            static_cast<std::size_t>(xcb_get_property_value_length(property.get())) / sizeof(Value)};
}

} // namespace lumavex
