// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/x11/MendingPlan.h"

#include <algorithm>
#include <cstdint>

namespace lumavex {

namespace {

/// How far from the window compositing managers draw shadows.
constexpr int kShadowReach = 48;
/// A window this near to one that is left out has its picture kept, so that it is whole when the other is dragged
/// there.
constexpr int kNear = 100;
/// Painting, reading and putting into place costs three copies of a pixel; painting and reading everything two of each.
constexpr int kLargestShare = 3;

QRect grown(const QRect& rect, int margin)
{
    return rect.adjusted(-margin, -margin, margin, margin);
}

std::int64_t pixelsOf(const QRect& rect)
{
    return std::int64_t{rect.width()} * rect.height();
}

QRegion regionToMend(const MendingRequest& request, const QRegion& alsoMended)
{
    QRegion mended = alsoMended;
    QRegion covered;
    for (const StackedWindow& window : request.topToBottom) {
        // A compositing manager may show any window translucent.
        const bool opaque = !request.compositing && !window.top.shaped;
        if (!window.shown)
            mended += QRegion(reachOf(window.top, request.compositing)) - covered;
        else if (opaque)
            covered += window.top.outer;
    }
    if (!request.desktop)
        mended += QRegion(request.canvas) - covered;
    return mended & request.canvas;
}

} // namespace

QRect reachOf(const TopLevel& top, bool compositing)
{
    return compositing ? grown(top.outer, kShadowReach) : top.outer;
}

std::optional<MendingPlan> planMending(const MendingRequest& request, const QRegion& alsoMended)
{
    MendingPlan plan;
    const QPoint corner = request.canvas.topLeft();
    for (const QRect& rect : regionToMend(request, alsoMended))
        plan.places.add(rect.translated(-corner));
    std::int64_t pixels = 0;
    for (const QRect& place : plan.places)
        pixels += pixelsOf(place);
    if (pixels * kLargestShare > pixelsOf(request.canvas))
        return std::nullopt;

    std::vector<QRect> above; // what is left out
    for (const StackedWindow& window : request.topToBottom) {
        const auto touches = [&](const QRect& rect) { return rect.intersects(window.top.outer); };
        const auto touchesPlace = [&](const QRect& place) { return touches(place.translated(corner)); };
        if (!window.shown)
            above.push_back(grown(window.top.outer, kNear));
        else if (std::any_of(plan.places.begin(), plan.places.end(), touchesPlace))
            plan.layers.push_back(window.top);
        else if (touches(request.canvas) && std::any_of(above.begin(), above.end(), touches))
            plan.alsoKept.push_back(window.top);
    }
    return plan;
}

} // namespace lumavex
