// SPDX-License-Identifier: GPL-3.0-or-later
// A scene for bench/recorder-cost: a full screen whose every pixel moves with every frame, cheap to draw: a large
// picture made once is shown at a place that changes 60 times a second.
#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QScreen>
#include <QTimer>
#include <QWidget>

#include <cmath>

namespace {

/// Soft colours with fine text-like detail, so that encoders find both flat parts and edges.
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

class Motion : public QWidget {
public:
    Motion()
    {
        const QSize screen = QGuiApplication::primaryScreen()->size();
        picture_ = scenery(screen + QSize(400, 400));
        timer_.setTimerType(Qt::PreciseTimer);
        connect(&timer_, &QTimer::timeout, this, [this] {
            ++step_;
            update();
        });
        timer_.start(16);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        const QPoint place(int(200 + 199 * std::sin(step_ * 0.031)), int(200 + 199 * std::cos(step_ * 0.023)));
        QPainter(this).drawPixmap(-place, picture_);
    }

private:
    QPixmap picture_;
    QTimer timer_;
    int step_ = 0;
};

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    Motion motion;
    motion.setWindowFlag(Qt::X11BypassWindowManagerHint);
    // Nobody gives an unmanaged window the screen's size when it asks for it.
    motion.setGeometry(QGuiApplication::primaryScreen()->geometry());
    motion.show();
    return QApplication::exec();
}
