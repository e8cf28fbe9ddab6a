// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/x11/WindowLooks.h"

#include "platform/x11/WindowProperty.h"

#include <cstring>

namespace lumavex {

namespace {

constexpr std::uint32_t mostTitleWords = 256;      ///< words of 4 bytes
constexpr std::uint32_t mostIconWords = 1U << 19U; ///< two icons of 512 by 512 pixels
constexpr std::uint32_t largestIcon = 1024;        ///< pixels per side

struct LookRequest {
    xcb_get_property_cookie_t name;
    xcb_get_property_cookie_t oldName;
    xcb_get_property_cookie_t icon;
};

QString titleOf(const PropertyReply& name, const PropertyReply& oldName)
{
    if (const auto text = valuesOf<char>(name); !text.empty())
        return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())).simplified();
    const auto text = valuesOf<char>(oldName);
    const auto size = static_cast<qsizetype>(text.size());
    const bool latin1 = oldName && oldName->type == XCB_ATOM_STRING;
    return (latin1 ? QString::fromLatin1(text.data(), size) : QString::fromUtf8(text.data(), size)).simplified();
}

} // namespace

QImage iconOfWords(std::span<const std::uint32_t> words, int size)
{
    struct Icon {
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        std::span<const std::uint32_t> pixels;
    } best;
    const auto wanted = static_cast<std::uint32_t>(size);
    while (words.size() > 2) {
        const std::uint32_t width = words[0];
        const std::uint32_t height = words[1];
        words = words.subspan(2);
        if (width == 0 || height == 0 || width > largestIcon || height > largestIcon
            || words.size() < std::size_t(width) * height)
            break;
        const bool better = best.height < wanted ? height > best.height : height >= wanted && height < best.height;
        if (better)
            best = {width, height, words.first(std::size_t(width) * height)};
        words = words.subspan(std::size_t(width) * height);
    }
    if (best.height == 0)
        return {};
    QImage icon(static_cast<int>(best.width), static_cast<int>(best.height), QImage::Format_ARGB32);
    for (std::uint32_t y = 0; y < best.height; ++y)
        std::memcpy(icon.scanLine(static_cast<int>(y)), best.pixels.data() + std::size_t(y) * best.width,
                    std::size_t(best.width) * 4);
    return icon;
}

std::vector<WindowLook> looksOfWindows(const XcbConnection& connection, const std::vector<std::uint32_t>& windows,
                                       int iconSize)
{
    xcb_connection_t* const c = connection.get();
    std::vector<LookRequest> requests;
    requests.reserve(windows.size());
    for (const std::uint32_t window : windows)
        requests.push_back(
            {xcb_get_property(c, 0, window, connection.atom(Atom::NET_WM_NAME), XCB_GET_PROPERTY_TYPE_ANY, 0,
                              mostTitleWords),
             xcb_get_property(c, 0, window, XCB_ATOM_WM_NAME, XCB_GET_PROPERTY_TYPE_ANY, 0, mostTitleWords),
             xcb_get_property(c, 0, window, connection.atom(Atom::NET_WM_ICON), XCB_ATOM_CARDINAL, 0, mostIconWords)});
    std::vector<WindowLook> looks;
    looks.reserve(windows.size());
    for (const LookRequest& request : requests) {
        const PropertyReply name(xcb_get_property_reply(c, request.name, nullptr));
        const PropertyReply oldName(xcb_get_property_reply(c, request.oldName, nullptr));
        const PropertyReply icon(xcb_get_property_reply(c, request.icon, nullptr));
        looks.push_back({titleOf(name, oldName), iconOfWords(valuesOf<std::uint32_t>(icon), iconSize)});
    }
    return looks;
}

} // namespace lumavex
