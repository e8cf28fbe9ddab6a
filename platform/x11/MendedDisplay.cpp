// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/x11/MendedDisplay.h"

#include <algorithm>
#include <utility>

namespace lumavex {

namespace {

using namespace std::chrono_literals;

/// Time during which a compositing manager may still show a moved or closed window at its old place.
constexpr auto kTraceLasts = 1s;

} // namespace

MendedDisplay::MendedDisplay(const XcbConnection& connection, SharedImagePool& pool, WindowPainter& painter,
                             const PixelLayout& layout)
    : connection_(connection), pool_(pool), painter_(painter), series_(connection, pool, layout)
{
    if (!connection_.extensions().fixes)
        return;
    region_ = {connection_.get(), connection_.newId()};
    xcb_xfixes_create_region(connection_.get(), region_.id(), 0, nullptr);
}

Grab MendedDisplay::grabAsItIs(const std::function<QRect()>& listen)
{
    series_.takeDamage();
    const QRect display = listen();
    const ChangedArea changed = usePlaces({}, display, false);
    return series_.read(display, changed) ? series_.finish() : Grab{};
}

MendedDisplay::Result MendedDisplay::grab(const MendingRequest& request, const QSize& rootSize,
                                          const std::function<bool()>& stillTrue)
{
    auto plan = planMending(request, traces(request));
    if (!plan)
        return {Obstacle::TooMuch, {}};
    ChangedArea changed = usePlaces(plan->places, request.canvas, plan->direct);
    // Nothing of the desktop must be recorded while it is hidden everywhere.
    const bool hidden = plan->direct && plan->layers.front().outer.contains(QRect(QPoint(0, 0), rootSize));
    const bool desktop = request.desktop && !hidden;
    const bool prepared = painter_.prepare({std::move(plan->layers), std::move(plan->alsoKept), desktop, plan->backdrop,
                                            request.compositing, request.canvas, rootSize,
                                            std::vector<QRect>(places_.begin(), places_.end())});
    connection_.copyRedirectedWindows(); // makes them and the screen's damage consistent
    series_.takeDamage(region_.id());
    const Reading reading = plan->direct ? readDirectly(request.canvas, std::move(changed), prepared)
                                         : readPainted(request.canvas, std::move(changed), prepared);
    if (reading == Reading::Failed) {
        painter_.repaint();
        return {};
    }
    const bool moved = !stillTrue();
    if (moved || reading == Reading::Incomplete) {
        painter_.repaint();
        series_.abandon();
        return {moved ? Obstacle::Moved : Obstacle::None, {}};
    }
    if (!places_.isEmpty() && !direct_)
        series_.patch(places_, pixels_.pixels());
    return {Obstacle::None, series_.finish()};
}

MendedDisplay::Reading MendedDisplay::readPainted(const QRect& canvas, ChangedArea changed, bool prepared)
{
    using Pixels = SharedImagePool::Reading;
    const ChangedArea painted = prepared && pixels_ ? painter_.paint() : ChangedArea();
    changed.add(painted);
    const Pixels beside{pixels_, painter_.canvas(), QPoint(0, 0), places_, Pixels::Into::Turn};
    if (!series_.read(canvas, changed, {painted.isEmpty() ? nullptr : &beside, nullptr}))
        return Reading::Failed;
    return places_.isEmpty() || (prepared && pixels_) ? Reading::Complete : Reading::Incomplete;
}

MendedDisplay::Reading MendedDisplay::readDirectly(const QRect& canvas, ChangedArea changed, bool prepared)
{
    const auto window = prepared ? painter_.onlyWindow() : std::nullopt;
    if (!window) // read nevertheless, so that the changes are not forgotten
        return series_.read(canvas, changed) ? Reading::Incomplete : Reading::Failed;
    changed.add(painter_.skipPainting());
    const OtherRows otherRows{*places_.begin(), window->first, canvas.topLeft() - window->second};
    return series_.read(canvas, changed, {nullptr, &otherRows}) ? Reading::Complete : Reading::Failed;
}

/// Places other than their own where excluded windows may still be shown.
QRegion MendedDisplay::traces(const MendingRequest& request)
{
    QRegion region;
    if (!request.compositing) {
        traces_.clear();
        return region;
    }
    const auto now = Clock::now();
    for (const StackedWindow& window : request.topToBottom) {
        const QRect rect = reachOf(window.top, true);
        if (window.shown || !rect.intersects(request.canvas))
            continue;
        const auto found =
            std::find_if(traces_.begin(), traces_.end(), [&](const Trace& trace) { return trace.rect == rect; });
        if (found == traces_.end())
            traces_.push_back({rect, now});
        else
            found->seen = now;
    }
    std::erase_if(traces_, [&](const Trace& trace) { return trace.seen + kTraceLasts < now; });
    for (const Trace& trace : traces_)
        region += trace.rect;
    return region;
}

/// The area that changes because the places to mend have changed.
ChangedArea MendedDisplay::usePlaces(const ChangedArea& places, const QRect& canvas, bool direct)
{
    if (std::equal(places.begin(), places.end(), places_.begin(), places_.end()) && canvas == canvas_
        && direct == direct_)
        return {};
    direct_ = direct;
    ChangedArea changed = std::exchange(places_, places);
    changed.add(places);
    canvas_ = canvas;
    int pixels = 0;
    std::vector<xcb_rectangle_t> rectangles;
    for (const QRect& place : places) {
        pixels += place.width() * place.height();
        const QPoint corner = canvas.topLeft() + place.topLeft();
        rectangles.push_back({static_cast<std::int16_t>(corner.x()), static_cast<std::int16_t>(corner.y()),
                              static_cast<std::uint16_t>(place.width()), static_cast<std::uint16_t>(place.height())});
    }
    pixels_ = {};
    if (pixels > 0 && !direct)
        pixels_ = pool_.take(QSize(pixels, 1), {});
    if (region_)
        xcb_xfixes_set_region(connection_.get(), region_.id(), static_cast<std::uint32_t>(rectangles.size()),
                              rectangles.data());
    painter_.repaint();
    return changed;
}

} // namespace lumavex
