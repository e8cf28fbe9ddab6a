// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/x11/WindowFacts.h"

#include "platform/x11/WindowProperty.h"

#include <QFile>

#include <algorithm>
#include <span>

namespace lumavex {

namespace {

constexpr std::uint32_t kMostWords = 256; ///< words of 4 bytes, more than any of these properties needs

xcb_get_property_cookie_t ask(const XcbConnection& connection, xcb_window_t window, xcb_atom_t property,
                              xcb_atom_t type)
{
    return xcb_get_property(connection.get(), 0, window, property, type, 0, kMostWords);
}

PropertyReply reply(const XcbConnection& connection, xcb_get_property_cookie_t cookie)
{
    return PropertyReply(xcb_get_property_reply(connection.get(), cookie, nullptr));
}

/// WM_CLASS contains two zero-terminated strings: the instance and the class.
std::optional<QString> classPart(const PropertyReply& property)
{
    if (!property || property->format != 8)
        return std::nullopt;
    const QByteArray value(static_cast<const char*>(xcb_get_property_value(property.get())),
                           xcb_get_property_value_length(property.get()));
    const auto parts = value.split('\0');
    if (parts.size() < 2 || parts[1].isEmpty())
        return std::nullopt;
    return QString::fromUtf8(parts[1]);
}

bool contains(std::span<const std::uint32_t> atoms, xcb_atom_t atom)
{
    return atom != XCB_ATOM_NONE && std::find(atoms.begin(), atoms.end(), atom) != atoms.end();
}

} // namespace

std::optional<QString> nameOfProcess(std::int64_t pid)
{
    QFile file(QStringLiteral("/proc/%1/comm").arg(pid));
    if (pid <= 0 || !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QString name = QString::fromUtf8(file.readAll()).trimmed();
    return name.isEmpty() ? std::nullopt : std::optional(name);
}

WindowFactsRequest::WindowFactsRequest(const XcbConnection& connection, xcb_window_t window)
    : connection_(connection), class_(ask(connection, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING)),
      pid_(ask(connection, window, connection.atom(Atom::NET_WM_PID), XCB_ATOM_CARDINAL)),
      state_(ask(connection, window, connection.atom(Atom::NET_WM_STATE), XCB_ATOM_ATOM)),
      type_(ask(connection, window, connection.atom(Atom::NET_WM_WINDOW_TYPE), XCB_ATOM_ATOM)),
      shadow_(ask(connection, window, connection.atom(Atom::GTK_FRAME_EXTENTS), XCB_ATOM_CARDINAL))
{
}

WindowFacts WindowFactsRequest::answer() const
{
    const auto className = reply(connection_, class_);
    const auto pid = reply(connection_, pid_);
    const auto state = reply(connection_, state_);
    const auto type = reply(connection_, type_);
    const auto shadow = reply(connection_, shadow_);

    WindowFacts facts;
    if (const auto value = valuesOf<std::uint32_t>(pid); !value.empty())
        facts.ownerPid = value[0];
    facts.ownerName = classPart(className);
    if (!facts.ownerName)
        facts.ownerName = nameOfProcess(facts.ownerPid);
    if (contains(valuesOf<std::uint32_t>(type), connection_.atom(Atom::NET_WM_WINDOW_TYPE_DESKTOP)))
        facts.layer = kLayerDesktop;
    else if (contains(valuesOf<std::uint32_t>(state), connection_.atom(Atom::NET_WM_STATE_BELOW)))
        facts.layer = kLayerBelow;
    else if (contains(valuesOf<std::uint32_t>(type), connection_.atom(Atom::NET_WM_WINDOW_TYPE_DOCK)))
        facts.layer = kLayerDock;
    else if (contains(valuesOf<std::uint32_t>(state), connection_.atom(Atom::NET_WM_STATE_ABOVE)))
        facts.layer = kLayerAbove;
    if (const auto value = valuesOf<std::uint32_t>(shadow); value.size() == 4) // left, right, top, bottom
        facts.shadow = {static_cast<int>(value[0]), static_cast<int>(value[2]), static_cast<int>(value[1]),
                        static_cast<int>(value[3])};
    return facts;
}

} // namespace lumavex
