// SPDX-License-Identifier: GPL-3.0-or-later
// caret [MILLISECONDS]: a scene for bench/little-change-cost: a full screen of text in which nothing but a caret
// changes, every so many milliseconds (530, as toolkits do).
#include <QApplication>
#include <QPainter>
#include <QScreen>
#include <QTimer>
#include <QWidget>

namespace {

class Caret : public QWidget {
public:
    explicit Caret(int milliseconds)
    {
        setAttribute(Qt::WA_OpaquePaintEvent);
        timer_.setTimerType(Qt::PreciseTimer);
        connect(&timer_, &QTimer::timeout, this, [this] {
            shown_ = !shown_;
            update(caret_);
        });
        timer_.start(milliseconds);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.fillRect(rect(), Qt::white);
        for (int y = 24; y < height(); y += 20)
            painter.drawText(12, y,
                             QStringLiteral("The quick brown fox jumps over the lazy dog 0123456789. ").repeated(4));
        if (shown_)
            painter.fillRect(caret_, Qt::black);
    }

private:
    const QRect caret_{640, 409, 2, 18};
    QTimer timer_;
    bool shown_ = true;
};

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    const int milliseconds = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 0;
    Caret caret(milliseconds > 0 ? milliseconds : 530);
    caret.setWindowFlag(Qt::X11BypassWindowManagerHint);
    // Nobody gives an unmanaged window the screen's size when it asks for it.
    caret.setGeometry(QGuiApplication::primaryScreen()->geometry());
    caret.show();
    return QApplication::exec();
}
