// SPDX-License-Identifier: GPL-3.0-or-later
#include "packaging/demo/DemoWindows.h"

#include <QGuiApplication>
#include <QLinearGradient>
#include <QPainter>
#include <QRadialGradient>
#include <QScreen>
#include <QTime>
#include <QTimer>

#include <chrono>
#include <cmath>
#include <numbers>

namespace lumavex::demo {

namespace {

constexpr auto frameInterval = std::chrono::milliseconds(33);
constexpr double fullCircle = 2 * std::numbers::pi;

/// Position of a point that starts at start and moves at speed, reflected at 0 and at limit.
double reflected(double start, double speed, double seconds, double limit)
{
    const double path = std::fmod(std::abs(start + speed * seconds), 2 * limit);
    return path < limit ? path : 2 * limit - path;
}

void drawHand(QPainter& painter, double turn, double length, double width, const QColor& colour)
{
    const double angle = turn * fullCircle;
    const QPointF tip(std::sin(angle) * length, -std::cos(angle) * length);
    painter.setPen(QPen(colour, width, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(-0.15 * tip, tip);
}

} // namespace

MovingWindow::MovingWindow(const QString& title, const QRect& place, QPoint drift) : place_(place), drift_(drift)
{
    setWindowTitle(title);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setGeometry(place);
    clock_.start();
    auto* timer = new QTimer(this);
    timer->setTimerType(Qt::PreciseTimer);
    connect(timer, &QTimer::timeout, this, [this] {
        const double phase = static_cast<double>(clock_.elapsed()) / 1000.0;
        move(place_.topLeft()
             + QPointF(drift_.x() * std::sin(0.7 * phase), drift_.y() * std::sin(1.1 * phase)).toPoint());
        update();
    });
    timer->start(frameInterval);
}

void MovingWindow::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    draw(painter, static_cast<double>(clock_.elapsed()) / 1000.0);
}

void ClockWindow::draw(QPainter& painter, double)
{
    QLinearGradient ground(0, 0, width(), height());
    ground.setColorAt(0, QColor("#fff8ef"));
    ground.setColorAt(1, QColor("#ffe3d3"));
    painter.fillRect(rect(), ground);

    painter.translate(width() / 2.0, height() / 2.0);
    const double radius = std::min(width(), height()) * 0.44;
    painter.setPen(QPen(QColor("#33264a"), 4));
    painter.setBrush(Qt::white);
    painter.drawEllipse(QPointF(), radius, radius);
    for (int minute = 0; minute < 60; ++minute) {
        const bool hour = minute % 5 == 0;
        painter.save();
        painter.rotate(minute * 6.0);
        painter.setPen(QPen(QColor(hour ? "#33264a" : "#c9bfd8"), hour ? 3 : 1.5, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(QPointF(0, -radius * 0.92), QPointF(0, -radius * (hour ? 0.82 : 0.88)));
        painter.restore();
    }
    const double seconds = QTime::currentTime().msecsSinceStartOfDay() / 1000.0;
    drawHand(painter, seconds / 43200, radius * 0.5, 7, QColor("#33264a"));
    drawHand(painter, seconds / 3600, radius * 0.72, 5, QColor("#33264a"));
    drawHand(painter, seconds / 60, radius * 0.82, 2, QColor("#e5484d"));
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor("#e5484d"));
    painter.drawEllipse(QPointF(), 5, 5);
}

BouncingWindow::BouncingWindow(const QString& title, const QRect& place, QPoint drift)
    : MovingWindow(title, place, drift), discs_{{{60, 80}, {150, 95}, 46, QColor("#ff6f61")},
                                                {{200, 40}, {-110, 130}, 34, QColor("#ffd166")},
                                                {{120, 150}, {90, -160}, 28, QColor("#4cc9f0")},
                                                {{250, 100}, {-170, -70}, 40, QColor("#9b5de5")},
                                                {{30, 190}, {125, 60}, 22, QColor("#06d6a0")}}
{
}

void BouncingWindow::draw(QPainter& painter, double seconds)
{
    painter.fillRect(rect(), QColor("#1b1530"));
    painter.setPen(Qt::NoPen);
    for (const Disc& disc : discs_) {
        const QPointF room(width() - 2 * disc.radius, height() - 2 * disc.radius);
        const QPointF centre(disc.radius + reflected(disc.start.x(), disc.velocity.x(), seconds, room.x()),
                             disc.radius + reflected(disc.start.y(), disc.velocity.y(), seconds, room.y()));
        QRadialGradient shade(centre, disc.radius, centre - QPointF(disc.radius, disc.radius) * 0.4);
        shade.setColorAt(0, disc.colour.lighter(140));
        shade.setColorAt(0.6, disc.colour);
        shade.setColorAt(1, disc.colour.darker(130));
        painter.setBrush(shade);
        painter.drawEllipse(centre, disc.radius, disc.radius);
    }
}

void TypingWindow::draw(QPainter& painter, double seconds)
{
    static const QString text = QStringLiteral("Lumavex is recording this.\n\n"
                                               "Every window you see is real:\n"
                                               "a clock, a few bouncing discs,\n"
                                               "a melody, and these words.\n\n"
                                               "Press Stop, and it is yours.");
    constexpr double charactersPerSecond = 20;
    constexpr double pauseAtTheEnd = 2;
    const double round = static_cast<double>(text.size()) / charactersPerSecond + pauseAtTheEnd;
    const auto typed = static_cast<qsizetype>(std::fmod(seconds, round) * charactersPerSecond);
    const bool caret = std::fmod(seconds, 1.0) < 0.6;

    painter.fillRect(rect(), QColor("#fdfcff"));
    painter.fillRect(0, 0, 6, height(), QColor("#9b5de5"));
    QFont font(QStringLiteral("DejaVu Sans Mono"));
    font.setPixelSize(20);
    painter.setFont(font);
    painter.setPen(QColor("#33264a"));
    painter.drawText(rect().adjusted(26, 20, -10, -10), Qt::AlignLeft | Qt::AlignTop,
                     text.left(typed) + (caret ? QStringLiteral("\u2588") : QString()));
}

Backdrop::Backdrop()
{
    setWindowTitle(QStringLiteral("Desktop"));
    setAttribute(Qt::WA_X11NetWmWindowTypeDesktop);
    setWindowFlag(Qt::FramelessWindowHint);
    setGeometry(QGuiApplication::primaryScreen()->geometry());
}

void Backdrop::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    QLinearGradient sky(0, 0, width() * 0.4, height());
    sky.setColorAt(0, QColor("#2b1b54"));
    sky.setColorAt(0.55, QColor("#7b3f8c"));
    sky.setColorAt(1, QColor("#f2846b"));
    painter.fillRect(rect(), sky);
    QRadialGradient sun(width() * 0.78, height() * 0.86, height() * 0.5);
    sun.setColorAt(0, QColor(255, 226, 150, 200));
    sun.setColorAt(0.35, QColor(255, 180, 120, 90));
    sun.setColorAt(1, QColor(255, 160, 120, 0));
    painter.fillRect(rect(), sun);
}

} // namespace lumavex::demo
