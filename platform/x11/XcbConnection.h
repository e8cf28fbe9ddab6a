// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/x11/XcbHandles.h"

#include <QString>

#include <array>
#include <cstdint>
#include <functional>

namespace lumavex {

/// The atoms that this backend uses; XcbConnection.cpp lists their names in the same order.
enum class Atom {
    WM_STATE,
    NET_WM_ICON,
    NET_WM_NAME,
    NET_WM_PID,
    NET_WM_STATE,
    NET_WM_STATE_ABOVE,
    NET_WM_STATE_BELOW,
    NET_WM_WINDOW_TYPE,
    NET_WM_WINDOW_TYPE_DESKTOP,
    NET_WM_WINDOW_TYPE_DOCK,
    NET_CLIENT_LIST,
    GTK_FRAME_EXTENTS,
    XROOTPMAP_ID,
    ESETROOT_PMAP_ID,
    NET_WM_CM_S,
    Count
};

/// Capabilities of the server, queried once.
struct XcbExtensions {
    bool shm = false;
    bool shmDescriptors = false; ///< segments can be passed as file descriptors
    bool composite = false;      ///< with named window pixmaps
    bool damage = false;
    bool fixes = false;
    bool randr = false;         ///< 1.3 or newer: reports the primary output
    bool randrMonitors = false; ///< 1.5 or newer
    bool render = false;
    bool shape = false;
    std::uint8_t damageEvent = 0; ///< first event number
    std::uint8_t randrEvent = 0;
    std::uint8_t shapeEvent = 0;
};

/// A connection of our own to the X server of $DISPLAY. It is separate from the toolkit's, whose events would delay the
/// replies to grabs. Main thread only. Must outlive every object created through it.
class XcbConnection {
public:
    XcbConnection();
    ~XcbConnection();
    XcbConnection(const XcbConnection&) = delete;
    XcbConnection& operator=(const XcbConnection&) = delete;

    /// False when the server could not be reached or is gone: every reply is null then.
    bool alive() const;
    /// The reason why alive() is false, as text for the user.
    QString trouble() const;

    xcb_connection_t* get() const { return connection_; }
    const xcb_setup_t* setup() const { return setup_; } ///< null unless the server was reached
    const xcb_screen_t* screen() const { return screen_; }
    xcb_window_t root() const { return screen_ ? screen_->root : xcb_window_t{XCB_NONE}; }
    const XcbExtensions& extensions() const { return extensions_; }
    xcb_atom_t atom(Atom which) const { return atoms_[static_cast<std::size_t>(which)]; }

    std::uint32_t newId() const { return xcb_generate_id(connection_); }
    /// Waits until the server has executed all requests sent so far; the events up to then can be drained afterwards.
    void sync() const;
    /// Makes the server copy the contents of redirected windows to the screen now; otherwise it does so some time later
    /// or when the screen is read. It must precede every core GetImage of the screen: the server sends the head of that
    /// reply before it copies, the damage events of the copying next and the pixels last, so that the connection loses
    /// its place in the stream and every later reply (X.Org 21.1, DoGetImage in dix/dispatch.c). Does not wait.
    void copyRedirectedWindows() const;
    /// Passes on every event received. Drops errors of requests without reply, which arrive here too: they concern
    /// windows that disappeared meanwhile.
    void drain(const std::function<void(const xcb_generic_event_t&)>& handler) const;

private:
    void internAtoms(int screenNumber);
    void askExtensions();
    void prepareCopying();

    QString displayName_;
    xcb_connection_t* connection_;
    const xcb_setup_t* setup_ = nullptr;
    const xcb_screen_t* screen_ = nullptr;
    XcbExtensions extensions_;
    xcb_pixmap_t pixel_ = XCB_NONE;         ///< of the screen's depth; freed with the connection
    xcb_gcontext_t withWindows_ = XCB_NONE; ///< copies from the screen with its windows; freed with the connection
    std::array<xcb_atom_t, static_cast<std::size_t>(Atom::Count)> atoms_{};
};

} // namespace lumavex
