// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QElapsedTimer>
#include <QFont>
#include <QPointF>
#include <QString>
#include <QWidget>

#include <vector>

namespace lumavex::demo {

/// A window that redraws itself about thirty times a second and drifts around its place on the screen. Times are
/// seconds since its construction.
class MovingWindow : public QWidget {
public:
    MovingWindow(const QString& title, const QRect& place, QPoint drift);

protected:
    void paintEvent(QPaintEvent* event) final;
    virtual void draw(QPainter& painter, double seconds) = 0;

private:
    QElapsedTimer clock_;
    QRect place_;
    QPoint drift_;
};

/// An analogue clock with a sweeping second hand.
class ClockWindow : public MovingWindow {
public:
    using MovingWindow::MovingWindow;

protected:
    void draw(QPainter& painter, double seconds) override;
};

/// Glowing discs that bounce off the window's edges.
class BouncingWindow : public MovingWindow {
public:
    BouncingWindow(const QString& title, const QRect& place, QPoint drift);

protected:
    void draw(QPainter& painter, double seconds) override;

private:
    struct Disc {
        QPointF start;
        QPointF velocity; ///< pixels per second
        double radius;
        QColor colour;
    };
    std::vector<Disc> discs_;
};

/// A text that appears as if typed.
class TypingWindow : public MovingWindow {
public:
    using MovingWindow::MovingWindow;

protected:
    void draw(QPainter& painter, double seconds) override;
};

/// The background behind the windows, marked as the desktop for the window manager.
class Backdrop : public QWidget {
public:
    Backdrop();

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace lumavex::demo
