// SPDX-License-Identifier: GPL-3.0-or-later
// A desktop with a few animated windows and a moving pointer: content to record on an otherwise empty screen.
#include "packaging/demo/DemoWindows.h"

#include <QApplication>
#include <QCursor>
#include <QElapsedTimer>
#include <QScreen>
#include <QTimer>

#include <chrono>
#include <cmath>

using namespace lumavex::demo;

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    const QSize screen = QGuiApplication::primaryScreen()->size();
    const auto place = [&screen](double x, double y, int width, int height) {
        return QRect(static_cast<int>(screen.width() * x), static_cast<int>(screen.height() * y), width, height);
    };

    Backdrop backdrop;
    backdrop.show();
    BouncingWindow discs(QStringLiteral("Discs"), place(0.06, 0.12, 460, 300), QPoint(30, 18));
    discs.show();
    ClockWindow clock(QStringLiteral("Clock"), place(0.66, 0.12, 300, 300), QPoint(40, 24));
    clock.show();
    TypingWindow words(QStringLiteral("Words"), place(0.28, 0.55, 460, 240), QPoint(24, 12));
    words.show();

    QElapsedTimer time;
    time.start();
    QTimer pointer;
    QObject::connect(&pointer, &QTimer::timeout, &pointer, [&] {
        const double seconds = static_cast<double>(time.elapsed()) / 1000.0;
        QCursor::setPos(static_cast<int>(screen.width() * (0.5 + 0.38 * std::sin(0.9 * seconds))),
                        static_cast<int>(screen.height() * (0.5 + 0.34 * std::sin(1.35 * seconds))));
    });
    pointer.start(std::chrono::milliseconds(16));
    return QApplication::exec();
}
