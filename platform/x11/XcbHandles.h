// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <xcb/composite.h>
#include <xcb/damage.h>
#include <xcb/render.h>
#include <xcb/xcb.h>
#include <xcb/xfixes.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <utility>

namespace lumavex {

struct FreeDeleter {
    void operator()(void* memory) const { std::free(memory); }
};

/// Owns memory that libxcb allocated with malloc: replies, errors, events. Null when the request failed or the
/// connection is dead.
template <typename T>
using XcbOwned = std::unique_ptr<T, FreeDeleter>;

/// A server-side object, released by the destructor. It must be destroyed before its connection. Releasing an object
/// that the server has already released (the damage of a destroyed window) is harmless.
template <auto Release>
class XcbHandle {
public:
    XcbHandle() = default;
    /// Takes ownership of the object; `id` 0 is no object.
    XcbHandle(xcb_connection_t* connection, std::uint32_t id) : connection_(connection), id_(id) {}
    XcbHandle(XcbHandle&& other) noexcept : connection_(other.connection_), id_(std::exchange(other.id_, 0)) {}
    XcbHandle& operator=(XcbHandle&& other) noexcept
    {
        if (this != &other) {
            reset();
            connection_ = other.connection_;
            id_ = std::exchange(other.id_, 0);
        }
        return *this;
    }
    ~XcbHandle() { reset(); }

    void reset()
    {
        if (id_)
            Release(connection_, std::exchange(id_, 0));
    }
    std::uint32_t id() const { return id_; }
    explicit operator bool() const { return id_ != 0; }

private:
    xcb_connection_t* connection_ = nullptr;
    std::uint32_t id_ = 0;
};

/// While this object exists, the server serves only this connection. Does nothing for a null connection.
class ServerGrab {
public:
    explicit ServerGrab(xcb_connection_t* connection) : connection_(connection)
    {
        if (connection_)
            xcb_grab_server(connection_);
    }
    ~ServerGrab()
    {
        if (!connection_)
            return;
        xcb_ungrab_server(connection_);
        xcb_flush(connection_);
    }
    ServerGrab(const ServerGrab&) = delete;
    ServerGrab& operator=(const ServerGrab&) = delete;

private:
    xcb_connection_t* const connection_;
};

using PixmapHandle = XcbHandle<xcb_free_pixmap>;
using GcHandle = XcbHandle<xcb_free_gc>;
using PictureHandle = XcbHandle<xcb_render_free_picture>;
using DamageHandle = XcbHandle<xcb_damage_destroy>;
using RegionHandle = XcbHandle<xcb_xfixes_destroy_region>;

} // namespace lumavex
