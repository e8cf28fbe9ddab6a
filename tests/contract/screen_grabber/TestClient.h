// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QRect>
#include <QString>

#include <xcb/xcb.h>

#include <vector>

namespace lumavex::test {

/// Another program on the screen of $DISPLAY. Every call has been carried out by the server when it returns.
class TestClient {
public:
    enum class Managed { No, Yes }; ///< no: override-redirect

    TestClient();
    ~TestClient();
    TestClient(const TestClient&) = delete;
    TestClient& operator=(const TestClient&) = delete;

    /// A window full of one colour, shown on top. `bounds` in root coordinates, y downward.
    xcb_window_t show(const QRect& bounds, QRgb color, Managed managed = Managed::No);
    /// The same with pixels that carry alpha (premultiplied).
    xcb_window_t showTranslucent(const QRect& bounds, QRgb premultiplied);
    void fill(xcb_window_t window, const QRect& part, QRgb color);
    void fillRoot(const QRect& part, QRgb color);
    void raise(xcb_window_t window);
    void place(xcb_window_t window, const QRect& bounds);
    void unmap(xcb_window_t window);
    void map(xcb_window_t window);
    void destroy(xcb_window_t window);
    void setClass(xcb_window_t window, const QByteArray& instanceAndClass);
    void setPid(xcb_window_t window, std::uint32_t pid);
    void setAtoms(xcb_window_t window, const char* property, const char* value);
    void setText(xcb_window_t window, const char* property, const char* type, const QByteArray& text);
    void setNumbers(xcb_window_t window, const char* property, const std::vector<std::uint32_t>& numbers);
    /// Leaves a one-coloured wallpaper of the root's size for others, as setters of wallpapers do.
    void leaveWallpaper(QRgb color);
    void movePointer(int x, int y);
    void sync();

    xcb_connection_t* connection() const { return connection_; }
    xcb_window_t root() const { return screen_->root; }
    QSize screenSize() const { return {screen_->width_in_pixels, screen_->height_in_pixels}; }

private:
    xcb_window_t create(const QRect& bounds, std::uint8_t depth, xcb_visualid_t visual, std::uint32_t pixel,
                        Managed managed);
    void change(xcb_window_t window, xcb_atom_t property, xcb_atom_t type, std::uint8_t format, std::uint32_t count,
                const void* values);
    xcb_atom_t atom(const char* name);
    std::uint32_t pixelOf(QRgb color) const;
    void fillDrawable(xcb_drawable_t drawable, const QRect& part, std::uint32_t pixel);

    xcb_connection_t* connection_;
    const xcb_screen_t* screen_;
};

} // namespace lumavex::test
