// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/x11/XcbConnection.h"

#include "platform/PlatformText.h"

#include <xcb/randr.h>
#include <xcb/shape.h>
#include <xcb/shm.h>

#include <sys/socket.h>

#include <optional>
#include <string>
#include <type_traits>

namespace lumavex {

namespace {

constexpr std::array<const char*, static_cast<std::size_t>(Atom::Count)> kAtomNames = {
    "WM_STATE",
    "_NET_WM_ICON",
    "_NET_WM_NAME",
    "_NET_WM_PID",
    "_NET_WM_STATE",
    "_NET_WM_STATE_ABOVE",
    "_NET_WM_STATE_BELOW",
    "_NET_WM_WINDOW_TYPE",
    "_NET_WM_WINDOW_TYPE_DESKTOP",
    "_NET_WM_WINDOW_TYPE_DOCK",
    "_NET_CLIENT_LIST",
    "_GTK_FRAME_EXTENTS",
    "_XROOTPMAP_ID",
    "ESETROOT_PMAP_ID",
    "_NET_WM_CM_S", // the screen's number is appended
};

/// Requests the version of an extension (the arguments are the version that the caller supports) without waiting, so
/// that the window waits for all replies together. std::nullopt without the extension.
template <typename Cookie, typename... Version>
std::optional<Cookie> askVersion(xcb_connection_t* connection, xcb_extension_t* extension,
                                 Cookie (*query)(xcb_connection_t*, Version...), std::type_identity_t<Version>... known)
{
    const xcb_query_extension_reply_t* const data = xcb_get_extension_data(connection, extension);
    if (!data || !data->present)
        return std::nullopt;
    return query(connection, known...);
}

template <typename Cookie, typename Reply>
XcbOwned<Reply> answer(xcb_connection_t* connection, const std::optional<Cookie>& cookie,
                       Reply* (*reply)(xcb_connection_t*, Cookie, xcb_generic_error_t**))
{
    return XcbOwned<Reply>(cookie ? reply(connection, *cookie, nullptr) : nullptr);
}

bool atLeast(std::uint32_t major, std::uint32_t minor, std::uint32_t wantedMajor, std::uint32_t wantedMinor)
{
    return major > wantedMajor || (major == wantedMajor && minor >= wantedMinor);
}

/// A server reached over the network may offer shared memory, too, but that of its own machine.
bool sharesMachine(xcb_connection_t* connection)
{
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    return getsockname(xcb_get_file_descriptor(connection), reinterpret_cast<sockaddr*>(&address), &length) == 0
           && address.ss_family == AF_UNIX;
}

} // namespace

XcbConnection::XcbConnection() : displayName_(qEnvironmentVariable("DISPLAY"))
{
    int screenNumber = 0;
    connection_ = xcb_connect(nullptr, &screenNumber);
    if (!alive())
        return;
    setup_ = xcb_get_setup(connection_);
    auto screens = xcb_setup_roots_iterator(setup_);
    for (int skip = screenNumber; skip > 0 && screens.rem > 1; --skip)
        xcb_screen_next(&screens);
    screen_ = screens.data;
    for (xcb_extension_t* extension :
         {&xcb_shm_id, &xcb_composite_id, &xcb_damage_id, &xcb_xfixes_id, &xcb_randr_id, &xcb_render_id, &xcb_shape_id})
        xcb_prefetch_extension_data(connection_, extension);
    internAtoms(screenNumber);
    askExtensions();
    prepareCopying();
}

XcbConnection::~XcbConnection()
{
    xcb_disconnect(connection_);
}

bool XcbConnection::alive() const
{
    return xcb_connection_has_error(connection_) == 0;
}

QString XcbConnection::trouble() const
{
    if (alive())
        return {};
    if (setup_)
        return PlatformText::tr("The connection to the screen was lost. Please start the program again.");
    if (displayName_.isEmpty())
        return PlatformText::tr(
            "There is no screen to record: the program was started outside a graphical session (DISPLAY is not set).");
    return PlatformText::tr("The screen \"%1\" cannot be reached. Is the X server running, and may this user use it?")
        .arg(displayName_);
}

void XcbConnection::internAtoms(int screenNumber)
{
    std::array<xcb_intern_atom_cookie_t, kAtomNames.size()> cookies{};
    for (std::size_t i = 0; i < kAtomNames.size(); ++i) {
        std::string name = kAtomNames[i];
        if (i == static_cast<std::size_t>(Atom::NET_WM_CM_S))
            name += std::to_string(screenNumber);
        cookies[i] = xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.c_str());
    }
    for (std::size_t i = 0; i < cookies.size(); ++i) {
        const XcbOwned<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection_, cookies[i], nullptr));
        atoms_[i] = reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
    }
}

void XcbConnection::askExtensions()
{
    xcb_connection_t* const c = connection_;
    const bool shares = sharesMachine(c);
    const auto shmCookie = shares ? askVersion(c, &xcb_shm_id, xcb_shm_query_version) : std::nullopt;
    const auto fixesCookie = askVersion(c, &xcb_xfixes_id, xcb_xfixes_query_version, 2, 0);
    const auto compositeCookie = askVersion(c, &xcb_composite_id, xcb_composite_query_version, 0, 2);
    const auto damageCookie = askVersion(c, &xcb_damage_id, xcb_damage_query_version, 1, 1);
    const auto randrCookie = askVersion(c, &xcb_randr_id, xcb_randr_query_version, 1, 5);
    const auto renderCookie = askVersion(c, &xcb_render_id, xcb_render_query_version, 0, 11);

    if (const auto* const shape = xcb_get_extension_data(c, &xcb_shape_id); shape && shape->present) {
        extensions_.shape = true;
        extensions_.shapeEvent = shape->first_event;
    }
    const auto shm = answer(c, shmCookie, xcb_shm_query_version_reply);
    extensions_.shm = shm != nullptr;
    extensions_.shmDescriptors = shm && atLeast(shm->major_version, shm->minor_version, 1, 2);
    const auto fixes = answer(c, fixesCookie, xcb_xfixes_query_version_reply);
    extensions_.fixes = fixes && fixes->major_version >= 2;
    const auto composite = answer(c, compositeCookie, xcb_composite_query_version_reply);
    extensions_.composite = composite && atLeast(composite->major_version, composite->minor_version, 0, 2);
    const auto damage = answer(c, damageCookie, xcb_damage_query_version_reply);
    extensions_.damage = damage && extensions_.fixes;
    if (damage)
        extensions_.damageEvent = xcb_get_extension_data(c, &xcb_damage_id)->first_event;
    const auto randr = answer(c, randrCookie, xcb_randr_query_version_reply);
    extensions_.randr = randr && atLeast(randr->major_version, randr->minor_version, 1, 3);
    extensions_.randrMonitors = randr && atLeast(randr->major_version, randr->minor_version, 1, 5);
    if (randr)
        extensions_.randrEvent = xcb_get_extension_data(c, &xcb_randr_id)->first_event;
    const auto render = answer(c, renderCookie, xcb_render_query_version_reply);
    extensions_.render = render && atLeast(render->major_version, render->minor_version, 0, 6);
}

void XcbConnection::sync() const
{
    // The cheapest request that has a reply.
    const XcbOwned<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
}

void XcbConnection::prepareCopying()
{
    pixel_ = newId();
    xcb_create_pixmap(connection_, screen_->root_depth, pixel_, root(), 1, 1);
    withWindows_ = newId();
    const std::uint32_t values[] = {XCB_SUBWINDOW_MODE_INCLUDE_INFERIORS, 0};
    xcb_create_gc(connection_, withWindows_, root(), XCB_GC_SUBWINDOW_MODE | XCB_GC_GRAPHICS_EXPOSURES, values);
}

void XcbConnection::copyRedirectedWindows() const
{
    xcb_copy_area(connection_, root(), pixel_, withWindows_, 0, 0, 0, 0, 1, 1);
}

void XcbConnection::drain(const std::function<void(const xcb_generic_event_t&)>& handler) const
{
    while (const XcbOwned<xcb_generic_event_t> event{xcb_poll_for_event(connection_)}) {
        if (event->response_type != 0)
            handler(*event);
    }
}

} // namespace lumavex
