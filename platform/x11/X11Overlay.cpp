// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/x11/X11Overlay.h"

#include "platform/x11/XcbHandles.h"

#include <QAbstractNativeEventFilter>
#include <QByteArray>
#include <QGuiApplication>

#include <xcb/xcb.h>
#include <xcb/xfixes.h>

#include <cstdint>
#include <cstdlib>
#include <utility>
#include <vector>

namespace lumavex {

namespace {

/// The connection of the program's own windows, so that shape requests stay in order with the requests that create and
/// paint them. Null without an X server.
xcb_connection_t* connectionOfWindows()
{
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 ? x11->connection() : nullptr;
}

int screenNumber()
{
    char* host = nullptr;
    int display = 0;
    int screen = 0;
    if (xcb_parse_display(nullptr, &host, &display, &screen))
        std::free(host);
    return screen;
}

xcb_window_t rootWindow(xcb_connection_t* connection, int screen)
{
    auto it = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; screen > 0 && it.rem > 1; --screen)
        xcb_screen_next(&it);
    return it.data->root;
}

/// Index of the glyph in the X server's cursor font.
std::uint16_t glyphOf(Qt::CursorShape shape)
{
    switch (shape) {
    case Qt::SizeBDiagCursor:
        return 136; // top_right_corner
    case Qt::SizeFDiagCursor:
        return 14; // bottom_right_corner
    case Qt::PointingHandCursor:
        return 60; // hand2
    default:
        return 68; // left_ptr
    }
}

/// An input-only window in front of all others. The window manager does not manage it; it exists as long as the
/// program's connection.
class X11PointerCatcher final : public PointerCatcher, private QAbstractNativeEventFilter {
public:
    X11PointerCatcher(xcb_connection_t* connection, xcb_window_t root, const QRect& area,
                      ScreenOverlay::PointerHandler handler)
        : connection_(connection), window_(xcb_generate_id(connection)), handler_(std::move(handler))
    {
        const std::uint32_t values[] = {1, XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE
                                               | XCB_EVENT_MASK_POINTER_MOTION};
        xcb_create_window(connection_, 0, window_, root, static_cast<std::int16_t>(area.x()),
                          static_cast<std::int16_t>(area.y()), static_cast<std::uint16_t>(area.width()),
                          static_cast<std::uint16_t>(area.height()), 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                          XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values);
        setCursor(Qt::ArrowCursor);
        xcb_map_window(connection_, window_);
        xcb_flush(connection_);
        QCoreApplication::instance()->installNativeEventFilter(this);
    }

    ~X11PointerCatcher() override
    {
        QCoreApplication::instance()->removeNativeEventFilter(this);
        xcb_destroy_window(connection_, window_);
        xcb_flush(connection_);
    }

    X11PointerCatcher(const X11PointerCatcher&) = delete;
    X11PointerCatcher& operator=(const X11PointerCatcher&) = delete;

    void setCursor(Qt::CursorShape shape) override
    {
        const std::uint16_t glyph = glyphOf(shape);
        if (glyph == glyph_)
            return;
        glyph_ = glyph;
        const xcb_font_t font = xcb_generate_id(connection_);
        const xcb_cursor_t cursor = xcb_generate_id(connection_);
        xcb_open_font(connection_, font, 6, "cursor");
        xcb_create_glyph_cursor(connection_, cursor, font, font, glyph, static_cast<std::uint16_t>(glyph + 1), 0, 0, 0,
                                0xffff, 0xffff, 0xffff);
        xcb_change_window_attributes(connection_, window_, XCB_CW_CURSOR, &cursor);
        xcb_free_cursor(connection_, cursor); // the window keeps a reference
        xcb_close_font(connection_, font);
        xcb_flush(connection_);
    }

private:
    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) override
    {
        if (eventType != "xcb_generic_event_t")
            return false;
        const auto* event = static_cast<const xcb_generic_event_t*>(message);
        switch (event->response_type & 0x7f) {
        case XCB_BUTTON_PRESS:
        case XCB_BUTTON_RELEASE: {
            const auto* button = reinterpret_cast<const xcb_button_press_event_t*>(event);
            if (button->event != window_)
                return false;
            if (button->detail == XCB_BUTTON_INDEX_1)
                handler_(
                    {(event->response_type & 0x7f) == XCB_BUTTON_PRESS ? CaughtPointer::Press : CaughtPointer::Release,
                     {button->event_x, button->event_y}});
            return true;
        }
        case XCB_MOTION_NOTIFY: {
            const auto* motion = reinterpret_cast<const xcb_motion_notify_event_t*>(event);
            if (motion->event != window_)
                return false;
            handler_({CaughtPointer::Move, {motion->event_x, motion->event_y}});
            return true;
        }
        default:
            return false;
        }
    }

    xcb_connection_t* connection_;
    xcb_window_t window_;
    ScreenOverlay::PointerHandler handler_;
    std::uint16_t glyph_ = 0;
};

class X11Overlay final : public ScreenOverlay {
public:
    explicit X11Overlay(xcb_connection_t* connection)
        : connection_(connection), screen_(screenNumber()), root_(rootWindow(connection, screen_))
    {
    }

    /// EWMH: the compositing manager of a screen owns its selection _NET_WM_CM_Sn.
    bool blendsTranslucentWindows() override
    {
        askServer();
        const XcbOwned<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
            connection_, xcb_get_selection_owner(connection_, compositingSelection_), nullptr));
        return owner && owner->owner != XCB_NONE;
    }

    void setShape(quintptr window, const QRegion& devicePixels) override
    {
        askServer();
        if (!canShape_)
            return;
        xcb_xfixes_region_t region = XCB_XFIXES_REGION_NONE;
        if (!devicePixels.isNull()) {
            std::vector<xcb_rectangle_t> rectangles;
            for (const QRect& rect : devicePixels)
                rectangles.push_back({static_cast<std::int16_t>(rect.x()), static_cast<std::int16_t>(rect.y()),
                                      static_cast<std::uint16_t>(rect.width()),
                                      static_cast<std::uint16_t>(rect.height())});
            region = xcb_generate_id(connection_);
            xcb_xfixes_create_region(connection_, region, static_cast<std::uint32_t>(rectangles.size()),
                                     rectangles.data());
        }
        xcb_xfixes_set_window_shape_region(connection_, static_cast<xcb_window_t>(window), XCB_SHAPE_SK_BOUNDING, 0, 0,
                                           region);
        if (region != XCB_XFIXES_REGION_NONE)
            xcb_xfixes_destroy_region(connection_, region);
        xcb_flush(connection_);
    }

    std::unique_ptr<PointerCatcher> catchPointer(const QRect& area, PointerHandler handler) override
    {
        return std::make_unique<X11PointerCatcher>(connection_, root_, area, std::move(handler));
    }

private:
    /// Queries the server's capabilities on the first call, since they are not needed before the first overlay.
    void askServer()
    {
        if (std::exchange(asked_, true))
            return;
        const QByteArray name = "_NET_WM_CM_S" + QByteArray::number(screen_);
        const auto atomCookie = xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data());
        // The server answers other requests of the extension only after this one.
        const XcbOwned<xcb_xfixes_query_version_reply_t> version(xcb_xfixes_query_version_reply(
            connection_, xcb_xfixes_query_version(connection_, XCB_XFIXES_MAJOR_VERSION, XCB_XFIXES_MINOR_VERSION),
            nullptr));
        canShape_ = version && version->major_version >= 2;
        const XcbOwned<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(connection_, atomCookie, nullptr));
        compositingSelection_ = atom ? atom->atom : xcb_atom_t{XCB_ATOM_NONE};
    }

    xcb_connection_t* connection_;
    int screen_;
    xcb_window_t root_;
    bool asked_ = false;
    bool canShape_ = false;
    xcb_atom_t compositingSelection_ = XCB_ATOM_NONE;
};

class NoOverlay final : public ScreenOverlay {
public:
    bool blendsTranslucentWindows() override { return true; }
    void setShape(quintptr, const QRegion&) override {}
    std::unique_ptr<PointerCatcher> catchPointer(const QRect&, PointerHandler) override { return nullptr; }
};

} // namespace

std::unique_ptr<ScreenOverlay> createX11Overlay()
{
    xcb_connection_t* const connection = connectionOfWindows();
    if (!connection)
        return std::make_unique<NoOverlay>();
    return std::make_unique<X11Overlay>(connection);
}

} // namespace lumavex
