// SPDX-License-Identifier: GPL-3.0-or-later
// full_screen_motion [STEPS]: a full screen on which every pixel moves STEPS times a second (default 60; 0 stands
// still), cheap to draw: the server copies from a changing position of a large picture that is made once.
#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QScreen>
#include <QTimer>
#include <QWidget>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <xcb/xcb.h>

namespace {

/// Soft colours with fine text-like detail, so that encoders find both flat areas and edges.
QPixmap scenery(const QSize& size)
{
    QPixmap picture(size);
    QPainter painter(&picture);
    QLinearGradient sky(0, 0, size.width(), size.height());
    sky.setColorAt(0, QColor(0x2b, 0x1d, 0x55));
    sky.setColorAt(0.5, QColor(0xf2, 0x80, 0x6b));
    sky.setColorAt(1, QColor(0xfd, 0xe0, 0x9a));
    painter.fillRect(picture.rect(), sky);
    painter.setRenderHint(QPainter::Antialiasing);
    for (int y = 20; y < size.height(); y += 24) {
        painter.setPen(QColor::fromHsv(y % 360, 90, y % 48 < 24 ? 255 : 60));
        painter.drawText((y * 7) % 160, y,
                         QStringLiteral("The quick brown fox jumps over the lazy dog 0123456789. ").repeated(6));
    }
    return picture;
}

/// Keeps the picture in the X server, which only copies from it, so that the scene costs almost nothing.
class Motion : public QWidget {
public:
    explicit Motion(int stepsPerSecond)
    {
        // As a desktop, so that every other window is above it with any window manager. The second call creates the
        // window.
        setAttribute(Qt::WA_X11NetWmWindowTypeDesktop);
        setAttribute(Qt::WA_PaintOnScreen);
        setAttribute(Qt::WA_NoSystemBackground);
        timer_.setTimerType(Qt::PreciseTimer);
        connect(&timer_, &QTimer::timeout, this, [this] {
            ++step_;
            draw();
        });
        if (stepsPerSecond > 0)
            timer_.start(1000 / stepsPerSecond);
    }

    QPaintEngine* paintEngine() const override { return nullptr; }

protected:
    void paintEvent(QPaintEvent*) override { draw(); }

private:
    void upload()
    {
        const QImage picture = scenery(size() + QSize(400, 400)).toImage().convertToFormat(QImage::Format_RGB32);
        const auto width = static_cast<std::uint16_t>(picture.width());
        const xcb_screen_t* const screen = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
        pixmap_ = xcb_generate_id(connection_);
        xcb_create_pixmap(connection_, screen->root_depth, pixmap_, screen->root, width,
                          static_cast<std::uint16_t>(picture.height()));
        context_ = xcb_generate_id(connection_);
        const std::uint32_t noExposures = 0;
        xcb_create_gc(connection_, context_, pixmap_, XCB_GC_GRAPHICS_EXPOSURES, &noExposures);
        for (int y = 0; y < picture.height(); ++y) // requests have a maximum size
            xcb_put_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap_, context_, width, 1, 0,
                          static_cast<std::int16_t>(y), 0, screen->root_depth,
                          static_cast<std::uint32_t>(picture.bytesPerLine()), picture.constScanLine(y));
    }

    void draw()
    {
        if (!pixmap_)
            upload();
        xcb_copy_area(connection_, pixmap_, static_cast<xcb_window_t>(winId()), context_,
                      static_cast<std::int16_t>(200 + 199 * std::sin(step_ * 0.031)),
                      static_cast<std::int16_t>(200 + 199 * std::cos(step_ * 0.023)), 0, 0,
                      static_cast<std::uint16_t>(width()), static_cast<std::uint16_t>(height()));
        xcb_flush(connection_);
    }

    xcb_connection_t* const connection_ = qApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
    xcb_pixmap_t pixmap_ = 0; ///< both are freed with the connection
    xcb_gcontext_t context_ = 0;
    QTimer timer_;
    int step_ = 0;
};

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    Motion motion(argc > 1 ? std::atoi(argv[1]) : 60);
    motion.setGeometry(QGuiApplication::primaryScreen()->geometry());
    motion.show();
    return QApplication::exec();
}
