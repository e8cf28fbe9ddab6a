// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/contract/screen_grabber/TestClient.h"

#include <cstdlib>
#include <cstring>

namespace lumavex::test {

TestClient::TestClient() : connection_(xcb_connect(nullptr, nullptr))
{
    screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
}

TestClient::~TestClient()
{
    xcb_disconnect(connection_);
}

void TestClient::sync()
{
    std::free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
}

std::uint32_t TestClient::pixelOf(QRgb color) const
{
    if (screen_->root_depth != 30)
        return color;
    const auto deep = [](int value) { return static_cast<std::uint32_t>(value << 2 | value >> 6); };
    return deep(qRed(color)) << 20 | deep(qGreen(color)) << 10 | deep(qBlue(color));
}

xcb_window_t TestClient::create(const QRect& bounds, std::uint8_t depth, xcb_visualid_t visual, std::uint32_t pixel,
                                Managed managed)
{
    const xcb_window_t window = xcb_generate_id(connection_);
    const xcb_colormap_t colors = xcb_generate_id(connection_);
    xcb_create_colormap(connection_, XCB_COLORMAP_ALLOC_NONE, colors, root(), visual);
    // With a background of its colour the server paints the window by itself whenever it is exposed.
    const std::uint32_t values[] = {pixel, 0, managed == Managed::No, colors};
    xcb_create_window(connection_, depth, window, root(), static_cast<std::int16_t>(bounds.x()),
                      static_cast<std::int16_t>(bounds.y()), static_cast<std::uint16_t>(bounds.width()),
                      static_cast<std::uint16_t>(bounds.height()), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, visual,
                      XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_COLORMAP, values);
    std::uint32_t hints[18] = {1}; // USPosition: window managers leave it where it is
    change(window, XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS, 32, 18, hints);
    map(window);
    return window;
}

xcb_window_t TestClient::show(const QRect& bounds, QRgb color, Managed managed)
{
    return create(bounds, screen_->root_depth, screen_->root_visual, pixelOf(color), managed);
}

xcb_window_t TestClient::showTranslucent(const QRect& bounds, QRgb premultiplied)
{
    for (auto depths = xcb_screen_allowed_depths_iterator(screen_); depths.rem; xcb_depth_next(&depths)) {
        if (depths.data->depth == 32 && xcb_depth_visuals_length(depths.data) > 0)
            return create(bounds, 32, xcb_depth_visuals(depths.data)->visual_id, premultiplied, Managed::No);
    }
    return XCB_NONE;
}

void TestClient::fillDrawable(xcb_drawable_t drawable, const QRect& part, std::uint32_t pixel)
{
    const xcb_gcontext_t gc = xcb_generate_id(connection_);
    xcb_create_gc(connection_, gc, drawable, XCB_GC_FOREGROUND, &pixel);
    const xcb_rectangle_t rectangle{static_cast<std::int16_t>(part.x()), static_cast<std::int16_t>(part.y()),
                                    static_cast<std::uint16_t>(part.width()),
                                    static_cast<std::uint16_t>(part.height())};
    xcb_poly_fill_rectangle(connection_, drawable, gc, 1, &rectangle);
    xcb_free_gc(connection_, gc);
    sync();
}

void TestClient::fill(xcb_window_t window, const QRect& part, QRgb color)
{
    fillDrawable(window, part, pixelOf(color));
}

void TestClient::fillRoot(const QRect& part, QRgb color)
{
    fill(root(), part, color);
}

void TestClient::raise(xcb_window_t window)
{
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(connection_, window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    sync();
}

void TestClient::place(xcb_window_t window, const QRect& bounds)
{
    const std::uint32_t values[] = {static_cast<std::uint32_t>(bounds.x()), static_cast<std::uint32_t>(bounds.y()),
                                    static_cast<std::uint32_t>(bounds.width()),
                                    static_cast<std::uint32_t>(bounds.height())};
    xcb_configure_window(connection_, window,
                         XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                         values);
    sync();
}

void TestClient::unmap(xcb_window_t window)
{
    xcb_unmap_window(connection_, window);
    sync();
}

void TestClient::map(xcb_window_t window)
{
    xcb_map_window(connection_, window);
    sync();
}

void TestClient::destroy(xcb_window_t window)
{
    xcb_destroy_window(connection_, window);
    sync();
}

xcb_atom_t TestClient::atom(const char* name)
{
    auto* const reply = xcb_intern_atom_reply(
        connection_, xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(std::strlen(name)), name), nullptr);
    const xcb_atom_t result = reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
    std::free(reply);
    return result;
}

void TestClient::change(xcb_window_t window, xcb_atom_t property, xcb_atom_t type, std::uint8_t format,
                        std::uint32_t count, const void* values)
{
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, property, type, format, count, values);
    sync();
}

void TestClient::setClass(xcb_window_t window, const QByteArray& instanceAndClass)
{
    change(window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(instanceAndClass.size()),
           instanceAndClass.constData());
}

void TestClient::setPid(xcb_window_t window, std::uint32_t pid)
{
    change(window, atom("_NET_WM_PID"), XCB_ATOM_CARDINAL, 32, 1, &pid);
}

void TestClient::setAtoms(xcb_window_t window, const char* property, const char* value)
{
    const xcb_atom_t atoms[] = {atom(value)};
    change(window, atom(property), XCB_ATOM_ATOM, 32, 1, atoms);
}

void TestClient::setText(xcb_window_t window, const char* property, const char* type, const QByteArray& text)
{
    change(window, atom(property), atom(type), 8, static_cast<std::uint32_t>(text.size()), text.constData());
}

void TestClient::setNumbers(xcb_window_t window, const char* property, const std::vector<std::uint32_t>& numbers)
{
    change(window, atom(property), XCB_ATOM_CARDINAL, 32, static_cast<std::uint32_t>(numbers.size()), numbers.data());
}

void TestClient::leaveWallpaper(QRgb color)
{
    const xcb_pixmap_t pixmap = xcb_generate_id(connection_);
    const QRect all({0, 0}, screenSize());
    xcb_create_pixmap(connection_, screen_->root_depth, pixmap, root(), screen_->width_in_pixels,
                      screen_->height_in_pixels);
    fillDrawable(pixmap, all, pixelOf(color));
    change(root(), atom("_XROOTPMAP_ID"), XCB_ATOM_PIXMAP, 32, 1, &pixmap);
}

void TestClient::movePointer(int x, int y)
{
    xcb_warp_pointer(connection_, XCB_NONE, root(), 0, 0, 0, 0, static_cast<std::int16_t>(x),
                     static_cast<std::int16_t>(y));
    sync();
}

} // namespace lumavex::test
