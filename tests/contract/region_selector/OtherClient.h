// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/contract/screen_grabber/TestClient.h"

#include <QColor>
#include <QImage>
#include <QSize>

#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <memory>

/// Another program on the same display: its window of one colour covers the whole screen and counts the presses that
/// reach it.
class OtherClient : public lumavex::test::TestClient {
public:
    static constexpr QRgb colour = 0xff336699;

    OtherClient()
    {
        const xcb_window_t window = show({{0, 0}, screenSize()}, colour);
        const std::uint32_t presses = XCB_EVENT_MASK_BUTTON_PRESS;
        xcb_change_window_attributes(connection(), window, XCB_CW_EVENT_MASK, &presses);
        // Beneath the windows that the window manager has.
        const std::uint32_t below = XCB_STACK_MODE_BELOW;
        xcb_configure_window(connection(), window, XCB_CONFIG_WINDOW_STACK_MODE, &below);
        sync();
    }

    int pressesSoFar()
    {
        sync(); // everything that happened before has arrived
        while (const std::unique_ptr<xcb_generic_event_t, decltype(&std::free)> event{xcb_poll_for_event(connection()),
                                                                                      &std::free})
            presses_ += (event->response_type & 0x7f) == XCB_BUTTON_PRESS ? 1 : 0;
        return presses_;
    }

    /// Picture of the screen.
    QImage screen() const
    {
        const QSize size = screenSize();
        const std::unique_ptr<xcb_get_image_reply_t, decltype(&std::free)> reply(
            xcb_get_image_reply(connection(),
                                xcb_get_image(connection(), XCB_IMAGE_FORMAT_Z_PIXMAP, root(), 0, 0,
                                              static_cast<std::uint16_t>(size.width()),
                                              static_cast<std::uint16_t>(size.height()), ~0U),
                                nullptr),
            &std::free);
        if (!reply)
            return {};
        return QImage(xcb_get_image_data(reply.get()), size.width(), size.height(), QImage::Format_RGB32).copy();
    }

private:
    int presses_ = 0;
};
