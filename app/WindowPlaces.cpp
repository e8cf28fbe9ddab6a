// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/WindowPlaces.h"

#include <QGuiApplication>
#include <QRegion>
#include <QScreen>
#include <QWidget>

#include <algorithm>
#include <cstdint>

namespace lumavex {

namespace {

constexpr int grip = 80; ///< width of the title bar that must be visible for dragging

std::int64_t areaOf(const QRect& rect)
{
    return rect.isEmpty() ? 0 : std::int64_t(rect.width()) * rect.height();
}

/// The area that contains most of the window; the main area when none contains any of it.
QRect areaFor(const QRect& frame, const QList<QRect>& areas)
{
    return *std::ranges::max_element(areas, {}, [&](const QRect& area) { return areaOf(area & frame); });
}

} // namespace

bool isInReach(const QRect& frame, int titleBarHeight, const QList<QRect>& areas)
{
    const QRect bar(frame.left(), frame.top(), frame.width(), std::max(1, titleBarHeight));
    QRegion seen;
    int held = 0;
    for (const QRect& area : areas) {
        seen += area & frame; // mirrored screens share an area
        const QRect part = area & bar;
        if (2 * part.height() >= bar.height())
            held = std::max(held, part.width());
    }
    std::int64_t pixels = 0;
    for (const QRect& part : seen)
        pixels += areaOf(part);
    return 10 * pixels >= 9 * areaOf(frame) && held >= std::min(grip, frame.width());
}

QRect movedInside(const QRect& frame, const QRect& area)
{
    const int right = area.right() + 1 - frame.width();
    const int bottom = area.bottom() + 1 - frame.height();
    return {QPoint(std::max(area.left(), std::min(frame.left(), right)),
                   std::max(area.top(), std::min(frame.top(), bottom))),
            frame.size()};
}

QRect movedBeside(const QRect& frame, const QRect& other, const QRect& area)
{
    QRect best = frame;
    int least = -1;
    const QPoint places[] = {{frame.left(), other.bottom() + 1},
                             {other.right() + 1, frame.top()},
                             {other.left() - frame.width(), frame.top()},
                             {frame.left(), other.top() - frame.height()}};
    for (const QPoint& place : places) {
        const QRect candidate = movedInside(QRect(place, frame.size()), area);
        const int way = (candidate.topLeft() - frame.topLeft()).manhattanLength();
        if (!candidate.intersects(other) && area.contains(candidate) && (least < 0 || way < least)) {
            best = candidate;
            least = way;
        }
    }
    return best;
}

bool bringIntoReach(QWidget& window, const QWidget* uncovered)
{
    if (window.isMinimized() || window.isMaximized() || window.isFullScreen() || !QGuiApplication::primaryScreen())
        return false;
    QList<QRect> areas{QGuiApplication::primaryScreen()->availableGeometry()};
    const auto screens = QGuiApplication::screens();
    for (const QScreen* screen : screens)
        areas.append(screen->availableGeometry());
    const QRect frame = window.frameGeometry();
    const QRect area = areaFor(frame, areas);
    QRect wanted = frame;
    if (!isInReach(frame, window.geometry().top() - frame.top(), areas))
        wanted = movedInside(frame, area);
    if (uncovered && uncovered->isVisible() && wanted.intersects(uncovered->frameGeometry()))
        wanted = movedBeside(wanted, uncovered->frameGeometry(), area);
    if (wanted == frame)
        return false;
    window.move(wanted.topLeft());
    return true;
}

} // namespace lumavex
