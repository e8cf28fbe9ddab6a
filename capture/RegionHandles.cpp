// SPDX-License-Identifier: GPL-3.0-or-later
#include "capture/RegionHandles.h"

#include <algorithm>

namespace lumavex {

namespace {

std::int32_t truncated(double value)
{
    return static_cast<std::int32_t>(value);
}

FrameDimension handleFor(std::int32_t cornerX, std::int32_t cornerY)
{
    return {{static_cast<double>(cornerX - handleReach), static_cast<double>(cornerY - handleReach)}};
}

/// Handles that move with a dragged corner. The midpoint between two coordinates is computed from the one that is the
/// left or lower one by index, which after crossing is the larger one: that determines the rounding of halves.
struct DragRule {
    std::int32_t followsY; ///< the neighbour on the same horizontal edge
    std::int32_t followsX; ///< the neighbour on the same vertical edge
    bool draggedIsLeft;    ///< by index, regardless of its position
    bool draggedIsLower;
};

DragRule ruleFor(std::int32_t handle)
{
    switch (handle) {
    case LowerLeftHandle:
        return {LowerRightHandle, UpperLeftHandle, true, true};
    case LowerRightHandle:
        return {LowerLeftHandle, UpperRightHandle, false, true};
    case UpperLeftHandle:
        return {UpperRightHandle, LowerLeftHandle, true, false};
    default:
        return {UpperLeftHandle, LowerRightHandle, false, false};
    }
}

std::int32_t midpoint(std::int32_t from, std::int32_t to)
{
    return (to - from) / 2 + from;
}

std::vector<FrameDimension> handlesOf(std::int32_t x0, std::int32_t y0, std::int32_t w, std::int32_t h)
{
    return {handleFor(x0, y0), handleFor(x0 + w, y0), handleFor(x0 + w / 2, y0 + h / 2), handleFor(x0, y0 + h),
            handleFor(x0 + w, y0 + h)};
}

} // namespace

std::vector<FrameDimension> centredHandles(const CGSize& size_Region, const CGSize& size_Screen)
{
    const std::int32_t w = truncated(size_Region.width);
    const std::int32_t h = truncated(size_Region.height);
    const std::int32_t x0 = truncated((size_Screen.width - w) * 0.5);
    const std::int32_t y0 = truncated((size_Screen.height - h) * 0.5);
    return handlesOf(x0, y0, w, h);
}

void moveHandlesInside(std::vector<FrameDimension>& handles, const CGSize& before, const CGSize& now)
{
    const CGRect region = regionOfHandles(handles);
    const double w = std::min(region.width, now.width);
    const double h = std::min(region.height, now.height);
    // A region that shrinks keeps its upper edge.
    const double y = region.y + region.height - h + now.height - before.height;
    handles = handlesOf(truncated(std::clamp(region.x, 0.0, now.width - w)),
                        truncated(std::clamp(y, 0.0, now.height - h)), truncated(w), truncated(h));
}

std::int32_t handleAt(const std::vector<FrameDimension>& handles, const CGPoint& location)
{
    for (std::size_t i = 0; i < handles.size(); ++i) {
        const CGSize& p = handles[i].sizeDimension;
        if (p.width <= location.x && location.x <= p.width + handleSide && p.height <= location.y
            && location.y <= p.height + handleSide)
            return static_cast<std::int32_t>(i);
    }
    return NoHandle;
}

void dragHandle(std::vector<FrameDimension>& handles, std::int32_t handle, const CGPoint& location)
{
    const DragRule rule = ruleFor(handle);
    const auto point = [&handles](std::int32_t i) -> CGSize& {
        return handles.at(static_cast<std::size_t>(i)).sizeDimension;
    };
    point(handle) = {location.x, location.y};
    point(rule.followsY).height = location.y;
    point(rule.followsX).width = location.x;

    const std::int32_t ix = truncated(location.x);
    const std::int32_t iy = truncated(location.y);
    const std::int32_t partnerX = truncated(point(rule.followsY).width);
    const std::int32_t partnerY = truncated(point(rule.followsX).height);
    point(CentreHandle) = {
        static_cast<double>(rule.draggedIsLeft ? midpoint(ix, partnerX) : midpoint(partnerX, ix)),
        static_cast<double>(rule.draggedIsLower ? midpoint(iy, partnerY) : midpoint(partnerY, iy)),
    };
}

CGRect regionOfHandles(const std::vector<FrameDimension>& handles)
{
    constexpr std::int32_t beyond = 10000;
    std::int32_t minX = beyond;
    std::int32_t minY = beyond;
    std::int32_t maxX = -beyond;
    std::int32_t maxY = -beyond;
    for (const FrameDimension& handle : handles) {
        const CGSize& p = handle.sizeDimension;
        if (minX > p.width)
            minX = truncated(p.width);
        if (minY > p.height)
            minY = truncated(p.height);
        if (p.width > maxX)
            maxX = truncated(p.width);
        if (p.height > maxY)
            maxY = truncated(p.height);
    }
    return {static_cast<double>(minX + handleReach), static_cast<double>(minY + handleReach),
            static_cast<double>(maxX - minX), static_cast<double>(maxY - minY)};
}

} // namespace lumavex
