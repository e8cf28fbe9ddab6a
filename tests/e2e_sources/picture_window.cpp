// SPDX-License-Identifier: GPL-3.0-or-later
//
// picture_window FILE W H X Y VISIBLE_W VISIBLE_H NAME [background]
//
// A window at (X, Y) whose upper left part of a picture (FILE: W x H pixels of B, G, R and a byte) the X server itself
// keeps painted, whatever happens to the window. With `background` it lies beneath all others and no window manager
// knows it. Prints its number once it is shown, and stays until it is ended.
#include <xcb/xcb.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <unistd.h>

namespace {

struct Connection {
    Connection() : handle(xcb_connect(nullptr, nullptr)) {}
    ~Connection() { xcb_disconnect(handle); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    xcb_connection_t* handle;
};

xcb_pixmap_t uploaded(xcb_connection_t* c, const xcb_screen_t& screen, const std::string& bytes, int width, int height)
{
    const xcb_pixmap_t pixmap = xcb_generate_id(c);
    xcb_create_pixmap(c, screen.root_depth, pixmap, screen.root, std::uint16_t(width), std::uint16_t(height));
    const xcb_gcontext_t context = xcb_generate_id(c);
    xcb_create_gc(c, context, pixmap, 0, nullptr);
    constexpr int rows = 16; // a request is limited in length
    for (int y = 0; y < height; y += rows) {
        const int count = std::min(rows, height - y);
        const auto* data = reinterpret_cast<const std::uint8_t*>(bytes.data()) + std::size_t(y) * width * 4;
        xcb_put_image(c, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, context, std::uint16_t(width), std::uint16_t(count), 0,
                      std::int16_t(y), 0, screen.root_depth, std::uint32_t(width * count * 4), data);
    }
    return pixmap;
}

} // namespace

int main(int argc, char** argv)
{
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() < 8)
        return 64;
    int numbers[6];
    for (std::size_t i = 0; i < std::size(numbers); ++i)
        numbers[i] = std::atoi(arguments[i + 1].c_str());
    const auto [width, height, x, y, visibleWidth, visibleHeight] = numbers;
    const std::string& name = arguments[7];
    const bool background = arguments.size() > 8;
    std::string bytes(std::size_t(width) * height * 4, '\0');
    if (!std::ifstream(arguments[0], std::ios::binary).read(bytes.data(), std::streamsize(bytes.size())))
        return 65;

    const Connection connection;
    xcb_connection_t* const c = connection.handle;
    if (xcb_connection_has_error(c))
        return 66;
    const xcb_screen_t& screen = *xcb_setup_roots_iterator(xcb_get_setup(c)).data;
    const std::uint32_t values[] = {uploaded(c, screen, bytes, width, height), background ? 1U : 0U,
                                    XCB_EVENT_MASK_STRUCTURE_NOTIFY};
    const xcb_window_t window = xcb_generate_id(c);
    xcb_create_window(c, XCB_COPY_FROM_PARENT, window, screen.root, std::int16_t(x), std::int16_t(y),
                      std::uint16_t(visibleWidth), std::uint16_t(visibleHeight), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      screen.root_visual, XCB_CW_BACK_PIXMAP | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values);
    const std::string className = name + '\0' + name + '\0';
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8,
                        std::uint32_t(className.size()), className.data());
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8,
                        std::uint32_t(name.size()), name.data());
    const std::string pidName = "_NET_WM_PID";
    if (xcb_intern_atom_reply_t* atom =
            xcb_intern_atom_reply(c, xcb_intern_atom(c, 0, std::uint16_t(pidName.size()), pidName.data()), nullptr)) {
        const auto pid = std::uint32_t(getpid());
        xcb_change_property(c, XCB_PROP_MODE_REPLACE, window, atom->atom, XCB_ATOM_CARDINAL, 32, 1, &pid);
        std::free(atom);
    }
    // The place is the user's own wish (USPosition, PStaticGravity), which a window manager leaves alone.
    const std::uint32_t hints[18] = {
        1U | 1U << 9, std::uint32_t(x), std::uint32_t(y), 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 10};
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS, 32, 18,
                        hints);
    if (background) {
        const std::uint32_t below = XCB_STACK_MODE_BELOW;
        xcb_configure_window(c, window, XCB_CONFIG_WINDOW_STACK_MODE, &below);
    }
    xcb_map_window(c, window);
    xcb_flush(c);
    while (xcb_generic_event_t* event = xcb_wait_for_event(c)) {
        if ((event->response_type & 0x7f) == XCB_MAP_NOTIFY) {
            std::printf("%u\n", window);
            std::fflush(stdout);
        }
        std::free(event);
    }
    return 0;
}
