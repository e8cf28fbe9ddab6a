// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QImage>
#include <QSize>

#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <memory>

/// Another program on the same display: its window of one colour covers the whole screen and counts the presses that
/// reach it.
class OtherClient {
public:
    static constexpr QRgb colour = 0xff336699;

    OtherClient() : connection_(xcb_connect(nullptr, nullptr))
    {
        const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
        root_ = screen->root;
        size_ = {screen->width_in_pixels, screen->height_in_pixels};
        window_ = xcb_generate_id(connection_);
        const std::uint32_t values[] = {colour & 0xffffffU, 1,
                                        XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_STRUCTURE_NOTIFY};
        xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window_, root_, 0, 0, screen->width_in_pixels,
                          screen->height_in_pixels, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual,
                          XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values);
        // Beneath the windows that the window manager has.
        const std::uint32_t below = XCB_STACK_MODE_BELOW;
        xcb_configure_window(connection_, window_, XCB_CONFIG_WINDOW_STACK_MODE, &below);
        xcb_map_window(connection_, window_);
        pressesSoFar();
    }
    ~OtherClient() { xcb_disconnect(connection_); }
    OtherClient(const OtherClient&) = delete;
    OtherClient& operator=(const OtherClient&) = delete;

    QSize screenSize() const { return size_; }

    int pressesSoFar()
    {
        // An answer from the server: everything that happened before has arrived.
        std::free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
        while (const std::unique_ptr<xcb_generic_event_t, decltype(&std::free)> event{xcb_poll_for_event(connection_),
                                                                                      &std::free})
            presses_ += (event->response_type & 0x7f) == XCB_BUTTON_PRESS ? 1 : 0;
        return presses_;
    }

    /// What the screen shows.
    QImage screen() const
    {
        const std::unique_ptr<xcb_get_image_reply_t, decltype(&std::free)> reply(
            xcb_get_image_reply(connection_,
                                xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, root_, 0, 0,
                                              static_cast<std::uint16_t>(size_.width()),
                                              static_cast<std::uint16_t>(size_.height()), ~0U),
                                nullptr),
            &std::free);
        if (!reply)
            return {};
        return QImage(xcb_get_image_data(reply.get()), size_.width(), size_.height(), QImage::Format_RGB32).copy();
    }

private:
    xcb_connection_t* connection_;
    xcb_window_t root_ = 0;
    xcb_window_t window_ = 0;
    QSize size_;
    int presses_ = 0;
};
