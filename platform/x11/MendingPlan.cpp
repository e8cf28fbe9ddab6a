// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/x11/MendingPlan.h"

#include <algorithm>
#include <cstdint>

namespace lumavex {

namespace {

/// Largest distance from the window of a compositing manager's shadow.
constexpr int kShadowReach = 48;
/// A window within this distance of an excluded one keeps its picture, so that it is complete when the other is dragged
/// there.
constexpr int kNear = 100;
/// Painting, reading and copying into place costs three copies per pixel; painting and reading everything costs two.
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

bool isOpaque(const TopLevel& top, const MendingRequest& request)
{
    return !top.shaped && top.visual == request.screenVisual;
}

/// Windows that are covered in all places are not painted, but may be needed when those above them move.
void chooseLayers(const MendingRequest& request, MendingPlan& plan)
{
    QRegion unhidden;
    for (const QRect& place : plan.places)
        unhidden += place.translated(request.canvas.topLeft());
    std::vector<QRect> above; // excluded windows
    for (const StackedWindow& window : request.topToBottom) {
        const QRect& outer = window.top.outer;
        const auto touches = [&](const QRect& rect) { return rect.intersects(outer); };
        if (!window.shown) {
            above.push_back(grown(outer, kNear));
        } else if (unhidden.intersects(outer)) {
            plan.layers.push_back(window.top);
            if (isOpaque(window.top, request))
                unhidden -= outer;
        } else if (touches(request.canvas) && std::any_of(above.begin(), above.end(), touches)) {
            plan.alsoKept.push_back(window.top);
        }
    }
    plan.backdrop = !unhidden.isEmpty();
}

/// When one window fills the rows of all places, reads these from its own picture: whole rows need no further copy. Not
/// with a compositing manager, which shows more than the windows, and later.
void replaceByRows(const MendingRequest& request, MendingPlan& plan)
{
    QRect rows;
    for (const QRect& place : plan.places)
        rows |= QRect(0, place.top(), request.canvas.width(), place.height());
    const QRect onRoot = rows.translated(request.canvas.topLeft());
    const auto first =
        std::find_if(request.topToBottom.begin(), request.topToBottom.end(),
                     [&](const StackedWindow& window) { return window.shown && window.top.outer.intersects(onRoot); });
    if (rows.isEmpty() || first == request.topToBottom.end() || !first->top.outer.contains(onRoot)
        || !isOpaque(first->top, request))
        return;
    plan.places = ChangedArea(rows);
    plan.layers = {first->top};
    plan.direct = true;
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

    chooseLayers(request, plan);
    if (!request.compositing)
        replaceByRows(request, plan);
    return plan;
}

} // namespace lumavex
