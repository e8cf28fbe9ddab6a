// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/x11/WindowPainter.h"

#include "platform/x11/ServerRegion.h"

#include <xcb/shape.h>

#include <algorithm>

namespace lumavex {

namespace {

using namespace std::chrono_literals;

constexpr std::uint8_t kCanvasDepth = 32; ///< every server with Render supports it, whatever the screen's depth
/// Time for which an unneeded window stays redirected. Otherwise windows that come and go (menus) or are dragged would
/// make the server create and drop pictures of the windows they cover all the time.
constexpr auto kRedirectionKept = 2s;

} // namespace

WindowPainter::WindowPainter(const XcbConnection& connection) : connection_(connection), formats_(connection)
{
    if (!connection_.extensions().fixes)
        return;
    for (RegionHandle* const region : {&changedParts_, &windowParts_, &placesRegion_}) {
        *region = {connection_.get(), connection_.newId()};
        xcb_xfixes_create_region(connection_.get(), region->id(), 0, nullptr);
    }
}

bool WindowPainter::prepare(const PaintRequest& request)
{
    redirect(request);
    wanted_ = arrange(request);
    if (wanted_.canvas.isEmpty() || (wanted_.backToFront.empty() && !request.desktop))
        return false;
    if (!shown_ || shown_->places != wanted_.places)
        setPlaces(request);
    extent_ = takeChanges(request);
    if (wanted_ != shown_)
        extent_ = Extent::All;
    return true;
}

ChangedArea WindowPainter::paint()
{
    const ChangedArea changed = skipPainting();
    if (!changed.isEmpty()) {
        prepareCanvas();
        paintLayers();
    }
    return changed;
}

std::optional<std::pair<xcb_drawable_t, QPoint>> WindowPainter::onlyWindow() const
{
    if (wanted_.backToFront.size() != 1)
        return std::nullopt;
    const Layer& layer = wanted_.backToFront.front();
    return std::pair(redirected_.at(layer.window).window->pixmap(), layer.outer.topLeft());
}

ChangedArea WindowPainter::skipPainting()
{
    const QRect whole(QPoint(0, 0), wanted_.canvas.size());
    ChangedArea changed;
    if (extent_ == Extent::All && wanted_.places) {
        for (const QRect& place : *wanted_.places)
            changed.add(place);
        xcb_xfixes_copy_region(connection_.get(), placesRegion_.id(), changedParts_.id());
    } else if (extent_ == Extent::All) {
        changed.add(whole);
    } else if (extent_ == Extent::Part) {
        if (wanted_.places)
            xcb_xfixes_intersect_region(connection_.get(), changedParts_.id(), placesRegion_.id(), changedParts_.id());
        changed = fetchArea(connection_, changedParts_.id(), whole).value_or(ChangedArea(whole));
    }
    shown_ = wanted_;
    return changed;
}

void WindowPainter::release()
{
    redirected_.clear();
    desktop_.reset();
    canvasPicture_ = {};
    canvas_ = {};
    canvasSize_ = {};
    shown_.reset();
}

void WindowPainter::note(const xcb_generic_event_t& event)
{
    const auto reshaped = [this](xcb_window_t window) {
        if (const auto found = redirected_.find(window); found != redirected_.end())
            found->second.window->noteReshaped();
    };
    const int type = event.response_type & 0x7f;
    if (desktop_)
        desktop_->note(event);
    if (type == XCB_MAP_NOTIFY) {
        reshaped(reinterpret_cast<const xcb_map_notify_event_t&>(event).window);
    } else if (type == XCB_UNMAP_NOTIFY) {
        reshaped(reinterpret_cast<const xcb_unmap_notify_event_t&>(event).window);
    } else if (type == XCB_DESTROY_NOTIFY) {
        redirected_.erase(reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window);
    } else if (type == XCB_CONFIGURE_NOTIFY) {
        const auto& configure = reinterpret_cast<const xcb_configure_notify_event_t&>(event);
        const QSize size(configure.width + 2 * configure.border_width, configure.height + 2 * configure.border_width);
        if (const auto found = redirected_.find(configure.window);
            found != redirected_.end() && found->second.window->size() != size)
            found->second.window->noteReshaped();
    } else if (connection_.extensions().damage && type == connection_.extensions().damageEvent + XCB_DAMAGE_NOTIFY) {
        const auto& damage = reinterpret_cast<const xcb_damage_notify_event_t&>(event);
        if (const auto found = redirected_.find(damage.drawable);
            found != redirected_.end() && found->second.window->damage() == damage.damage)
            found->second.window->noteDamage();
    }
}

void WindowPainter::redirect(const PaintRequest& request)
{
    const auto now = Clock::now();
    for (const TopLevel& top : request.frontToBack)
        redirect(top, now);
    for (const TopLevel& top : request.alsoKept)
        redirect(top, now);
    std::erase_if(redirected_, [&](const auto& entry) { return entry.second.needed + kRedirectionKept < now; });
}

void WindowPainter::redirect(const TopLevel& top, Clock::time_point now)
{
    Redirection& entry = redirected_[top.window];
    entry.needed = now;
    if (!entry.window)
        entry.window = std::make_unique<RedirectedWindow>(connection_, formats_, top);
}

WindowPainter::Arrangement WindowPainter::arrange(const PaintRequest& request)
{
    for (const TopLevel& top : request.frontToBack)
        redirected_.at(top.window).window->startNaming();
    Arrangement arrangement{
        {}, request.desktop && request.backdrop, request.backdrop, request.alpha, request.canvas, request.places};
    for (auto top = request.frontToBack.rbegin(); top != request.frontToBack.rend(); ++top) {
        RedirectedWindow& window = *redirected_.at(top->window).window;
        if (window.finishNaming())
            arrangement.backToFront.push_back(
                {top->window, window.generation(), QRect(top->outer.topLeft(), window.size()), top->border});
        else
            arrangement.backdrop = true; // visible through the gap
    }
    return arrangement;
}

WindowPainter::Extent WindowPainter::takeChanges(const PaintRequest& request)
{
    using Damage = RedirectedWindow::Damage;
    xcb_connection_t* const c = connection_.get();
    xcb_xfixes_set_region(c, changedParts_.id(), 0, nullptr);
    Extent extent = request.desktop ? takeChangesOfDesktop(request) : Extent::Nothing;
    if (extent != Extent::Nothing && !wanted_.desktop) { // the visible parts of the desktop are kept, but windows hide
                                                         // them here
        extent = Extent::Nothing;
        xcb_xfixes_set_region(c, changedParts_.id(), 0, nullptr);
    }
    for (const Layer& layer : wanted_.backToFront) {
        RedirectedWindow& window = *redirected_.at(layer.window).window;
        if (request.places)
            window.noteDamage(); // content already on the screen must not be missed because its event has not arrived
        const Damage damage = window.takeDamage(windowParts_.id());
        if (damage == Damage::All)
            extent = Extent::All;
        if (damage != Damage::Part)
            continue;
        extent = std::max(extent, Extent::Part);
        const QPoint inside = layer.outer.topLeft() - wanted_.canvas.topLeft() + QPoint(layer.border, layer.border);
        xcb_xfixes_translate_region(c, windowParts_.id(), static_cast<std::int16_t>(inside.x()),
                                    static_cast<std::int16_t>(inside.y()));
        xcb_xfixes_union_region(c, changedParts_.id(), windowParts_.id(), changedParts_.id());
    }
    return extent;
}

WindowPainter::Extent WindowPainter::takeChangesOfDesktop(const PaintRequest& request)
{
    xcb_connection_t* const c = connection_.get();
    if (!desktop_)
        desktop_ = std::make_unique<DesktopBackground>(connection_, formats_);
    switch (desktop_->takeChange(request.canvas, request.rootSize)) {
    case DesktopBackground::Change::All:
        return Extent::All;
    case DesktopBackground::Change::Part:
        xcb_xfixes_copy_region(c, desktop_->changedParts(), changedParts_.id());
        xcb_xfixes_translate_region(c, changedParts_.id(), static_cast<std::int16_t>(-request.canvas.x()),
                                    static_cast<std::int16_t>(-request.canvas.y()));
        return Extent::Part;
    case DesktopBackground::Change::None:
        break;
    }
    return Extent::Nothing;
}

void WindowPainter::setPlaces(const PaintRequest& request)
{
    if (!request.places)
        return;
    std::vector<xcb_rectangle_t> rectangles;
    for (const QRect& place : *request.places)
        rectangles.push_back({static_cast<std::int16_t>(place.x()), static_cast<std::int16_t>(place.y()),
                              static_cast<std::uint16_t>(place.width()), static_cast<std::uint16_t>(place.height())});
    xcb_xfixes_set_region(connection_.get(), placesRegion_.id(), static_cast<std::uint32_t>(rectangles.size()),
                          rectangles.data());
}

void WindowPainter::prepareCanvas()
{
    const QSize size = wanted_.canvas.size();
    const bool likeScreen = wanted_.places.has_value();
    if (size == canvasSize_ && likeScreen == canvasLikeScreen_)
        return;
    xcb_connection_t* const c = connection_.get();
    canvasPicture_ = {};
    canvas_ = {c, connection_.newId()};
    xcb_create_pixmap(c, likeScreen ? connection_.screen()->root_depth : kCanvasDepth, canvas_.id(), connection_.root(),
                      static_cast<std::uint16_t>(size.width()), static_cast<std::uint16_t>(size.height()));
    canvasPicture_ = {c, connection_.newId()};
    const auto format = likeScreen ? formats_.ofVisual(connection_.screen()->root_visual) : formats_.argb32();
    xcb_render_create_picture(c, canvasPicture_.id(), canvas_.id(), format.id, 0, nullptr);
    canvasSize_ = size;
    canvasLikeScreen_ = likeScreen;
}

void WindowPainter::paintLayers()
{
    xcb_connection_t* const c = connection_.get();
    const bool everywhere = extent_ == Extent::All && !wanted_.places;
    const xcb_xfixes_region_t clip = everywhere ? xcb_xfixes_region_t{XCB_NONE} : changedParts_.id();
    xcb_xfixes_set_picture_clip_region(c, canvasPicture_.id(), clip, 0, 0);
    const xcb_render_color_t black{0, 0, 0, 0xffff};
    const xcb_rectangle_t all{0, 0, static_cast<std::uint16_t>(canvasSize_.width()),
                              static_cast<std::uint16_t>(canvasSize_.height())};
    if (wanted_.backdrop)
        xcb_render_fill_rectangles(c, XCB_RENDER_PICT_OP_SRC, canvasPicture_.id(), black, 1, &all);
    if (wanted_.desktop)
        desktop_->paint(canvasPicture_.id(), wanted_.canvas);
    for (const Layer& layer : wanted_.backToFront)
        paintWindow(layer);
}

void WindowPainter::paintWindow(const Layer& layer)
{
    xcb_connection_t* const c = connection_.get();
    const RedirectedWindow& window = *redirected_.at(layer.window).window;
    const QPoint corner = layer.outer.topLeft() - wanted_.canvas.topLeft();
    // Outside its shape the window's picture is undefined. The region is relative to the inside of the border. If the
    // window disappears now, no region is created, so the clip of the previous window is cleared first.
    xcb_xfixes_set_picture_clip_region(c, canvasPicture_.id(), XCB_NONE, 0, 0);
    const RegionHandle shape(c, connection_.newId());
    xcb_xfixes_create_region_from_window(c, shape.id(), layer.window, XCB_SHAPE_SK_BOUNDING);
    xcb_xfixes_translate_region(c, shape.id(), static_cast<std::int16_t>(corner.x() + layer.border),
                                static_cast<std::int16_t>(corner.y() + layer.border));
    if (extent_ == Extent::Part || wanted_.places)
        xcb_xfixes_intersect_region(c, shape.id(), changedParts_.id(), shape.id());
    xcb_xfixes_set_picture_clip_region(c, canvasPicture_.id(), shape.id(), 0, 0);
    const bool blend = wanted_.alpha && window.hasAlpha();
    xcb_render_composite(c, blend ? XCB_RENDER_PICT_OP_OVER : XCB_RENDER_PICT_OP_SRC, window.picture(), XCB_NONE,
                         canvasPicture_.id(), 0, 0, 0, 0, static_cast<std::int16_t>(corner.x()),
                         static_cast<std::int16_t>(corner.y()), static_cast<std::uint16_t>(layer.outer.width()),
                         static_cast<std::uint16_t>(layer.outer.height()));
}

} // namespace lumavex
