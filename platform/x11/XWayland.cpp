// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/x11/XWayland.h"

#include <xcb/randr.h>

#include <string_view>
#include <vector>

namespace lumavex {

namespace {

constexpr std::string_view kName = "XWAYLAND"; ///< name of the extension, and prefix of the outputs' names

bool isNamedByXWayland(const xcb_randr_get_output_info_reply_t& output)
{
    const auto* const name = reinterpret_cast<const char*>(xcb_randr_get_output_info_name(&output));
    const auto length = static_cast<std::size_t>(xcb_randr_get_output_info_name_length(&output));
    return std::string_view(name, length).starts_with(kName);
}

/// Servers before 23.1 lack the extension; later ones use the compositor's names for their outputs.
bool hasOutputOfXWayland(const XcbConnection& connection)
{
    xcb_connection_t* const c = connection.get();
    if (!connection.extensions().randr)
        return false;
    const XcbOwned<xcb_randr_get_screen_resources_current_reply_t> resources(
        xcb_randr_get_screen_resources_current_reply(c, xcb_randr_get_screen_resources_current(c, connection.root()),
                                                     nullptr));
    if (!resources)
        return false;
    const xcb_randr_output_t* const outputs = xcb_randr_get_screen_resources_current_outputs(resources.get());
    std::vector<xcb_randr_get_output_info_cookie_t> cookies;
    for (int i = 0; i < resources->num_outputs; ++i)
        cookies.push_back(xcb_randr_get_output_info(c, outputs[i], resources->config_timestamp));
    bool found = false;
    for (const auto& cookie : cookies) { // fetches every reply, so that none is left in the queue
        const XcbOwned<xcb_randr_get_output_info_reply_t> output(xcb_randr_get_output_info_reply(c, cookie, nullptr));
        found = found || (output && isNamedByXWayland(*output));
    }
    return found;
}

} // namespace

bool isXWayland(const XcbConnection& connection)
{
    if (!connection.alive())
        return false;
    const XcbOwned<xcb_query_extension_reply_t> extension(xcb_query_extension_reply(
        connection.get(), xcb_query_extension(connection.get(), kName.size(), kName.data()), nullptr));
    return (extension && extension->present) || hasOutputOfXWayland(connection);
}

} // namespace lumavex
