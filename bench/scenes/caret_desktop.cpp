// SPDX-License-Identifier: GPL-3.0-or-later
// caret_desktop [BLINKS]: a desktop with a page of text on which only a caret blinks, BLINKS times a second (default 1;
// 0 stands still).
#include <QApplication>
#include <QPainter>
#include <QPixmap>
#include <QScreen>
#include <QTimer>
#include <QWidget>

#include <cstdlib>

namespace {

QPixmap pageOfText(const QSize& size)
{
    QPixmap picture(size);
    QPainter painter(&picture);
    QLinearGradient desk(0, 0, size.width(), size.height());
    desk.setColorAt(0, QColor(0x1f, 0x3a, 0x5f));
    desk.setColorAt(1, QColor(0x4d, 0x7e, 0xa8));
    painter.fillRect(picture.rect(), desk);
    const QRect page = picture.rect().adjusted(size.width() / 5, 60, -size.width() / 5, -60);
    painter.fillRect(page, Qt::white);
    painter.setPen(QColor(0x22, 0x22, 0x22));
    for (int y = page.top() + 40; y < page.bottom() - 20; y += 22)
        painter.drawText(page.left() + 40, y,
                         QStringLiteral("Nothing happens here, line %1, but that somebody thinks.").arg(y));
    return picture;
}

class Caret : public QWidget {
public:
    explicit Caret(int blinksPerSecond) : page_(pageOfText(QGuiApplication::primaryScreen()->size()))
    {
        setAttribute(Qt::WA_OpaquePaintEvent);
        QObject::connect(&timer_, &QTimer::timeout, this, [this] {
            shown_ = !shown_;
            update(place());
        });
        if (blinksPerSecond > 0)
            timer_.start(500 / blinksPerSecond);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.drawPixmap(0, 0, page_);
        if (shown_)
            painter.fillRect(place(), Qt::black);
    }

private:
    QRect place() const { return {width() / 2, height() / 2, 2, 18}; }

    QPixmap page_;
    QTimer timer_;
    bool shown_ = true;
};

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    Caret caret(argc > 1 ? std::atoi(argv[1]) : 1);
    // As a desktop, so that every other window is above it with any window manager.
    caret.setAttribute(Qt::WA_X11NetWmWindowTypeDesktop);
    caret.setGeometry(QGuiApplication::primaryScreen()->geometry());
    caret.show();
    return QApplication::exec();
}
