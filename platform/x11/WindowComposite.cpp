// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/x11/WindowComposite.h"

#include "platform/x11/ServerRegion.h"

#include <xcb/shape.h>

#include <algorithm>

namespace lumavex {

namespace {

constexpr std::uint8_t kCanvasDepth = 32; ///< every server with Render has it, whatever the screen's depth

} // namespace

WindowComposite::WindowComposite(const XcbConnection& connection, SharedImagePool& pool)
    : connection_(connection), series_(pool, PixelLayout()), formats_(connection)
{
    if (!connection_.extensions().fixes)
        return;
    changedParts_ = {connection_.get(), connection_.newId()};
    windowParts_ = {connection_.get(), connection_.newId()};
    xcb_xfixes_create_region(connection_.get(), changedParts_.id(), 0, nullptr);
    xcb_xfixes_create_region(connection_.get(), windowParts_.id(), 0, nullptr);
}

Grab WindowComposite::compose(const CompositeRequest& request)
{
    redirectExactly(request.frontToBack);
    Arrangement wanted = arrange(request);
    if (wanted.canvas.isEmpty() || (wanted.backToFront.empty() && !wanted.desktop))
        return {};
    Extent extent = takeChanges(request, wanted);
    if (wanted != shown_)
        extent = Extent::All;
    const QRect whole(QPoint(0, 0), wanted.canvas.size());
    ChangedArea changed;
    if (extent != Extent::Nothing) {
        prepareCanvas(whole.size());
        paint(wanted, extent);
        shown_ = std::move(wanted);
        changed.add(whole);
    }
    if (extent == Extent::Part)
        changed = fetchArea(connection_, changedParts_.id(), whole).value_or(changed);
    if (!series_.read(canvas_.id(), whole, changed)) {
        shown_.reset();
        return {};
    }
    series_.compare();
    return series_.finish();
}

void WindowComposite::release()
{
    redirected_.clear();
    desktop_.reset();
    canvasPicture_ = {};
    canvas_ = {};
    canvasSize_ = {};
    series_.forget();
    shown_.reset();
}

void WindowComposite::note(const xcb_generic_event_t& event)
{
    const auto reshaped = [this](xcb_window_t window) {
        if (const auto found = redirected_.find(window); found != redirected_.end())
            found->second->noteReshaped();
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
            found != redirected_.end() && found->second->size() != size)
            found->second->noteReshaped();
    } else if (connection_.extensions().damage && type == connection_.extensions().damageEvent + XCB_DAMAGE_NOTIFY) {
        const auto& damage = reinterpret_cast<const xcb_damage_notify_event_t&>(event);
        if (const auto found = redirected_.find(damage.drawable);
            found != redirected_.end() && found->second->damage() == damage.damage)
            found->second->noteDamage();
    }
}

void WindowComposite::redirectExactly(const std::vector<TopLevel>& windows)
{
    std::erase_if(redirected_, [&](const auto& entry) {
        return std::none_of(windows.begin(), windows.end(),
                            [&](const TopLevel& top) { return top.window == entry.first; });
    });
    for (const TopLevel& top : windows) {
        auto& entry = redirected_[top.window];
        if (!entry)
            entry = std::make_unique<RedirectedWindow>(connection_, formats_, top);
        entry->startNaming();
    }
}

WindowComposite::Arrangement WindowComposite::arrange(const CompositeRequest& request)
{
    Arrangement arrangement{{}, request.desktop, request.alpha, request.canvas};
    for (auto top = request.frontToBack.rbegin(); top != request.frontToBack.rend(); ++top) {
        RedirectedWindow& window = *redirected_.at(top->window);
        if (window.finishNaming())
            arrangement.backToFront.push_back(
                {top->window, window.generation(), QRect(top->outer.topLeft(), window.size()), top->border});
    }
    return arrangement;
}

WindowComposite::Extent WindowComposite::takeChanges(const CompositeRequest& request, const Arrangement& arrangement)
{
    using Damage = RedirectedWindow::Damage;
    xcb_connection_t* const c = connection_.get();
    Extent extent = Extent::Nothing;
    xcb_xfixes_set_region(c, changedParts_.id(), 0, nullptr);
    for (const Layer& layer : arrangement.backToFront) {
        const Damage damage = redirected_.at(layer.window)->takeDamage(windowParts_.id());
        if (damage == Damage::All)
            extent = Extent::All;
        if (damage != Damage::Part)
            continue;
        extent = std::max(extent, Extent::Part);
        const QPoint inside = layer.outer.topLeft() - arrangement.canvas.topLeft() + QPoint(layer.border, layer.border);
        xcb_xfixes_translate_region(c, windowParts_.id(), static_cast<std::int16_t>(inside.x()),
                                    static_cast<std::int16_t>(inside.y()));
        xcb_xfixes_union_region(c, changedParts_.id(), windowParts_.id(), changedParts_.id());
    }
    if (request.desktop) {
        if (!desktop_)
            desktop_ = std::make_unique<DesktopBackground>(connection_, formats_);
        const auto change = desktop_->takeChange(request.canvas, request.rootSize);
        if (change == DesktopBackground::Change::All)
            extent = Extent::All;
        if (change == DesktopBackground::Change::Part) {
            extent = std::max(extent, Extent::Part);
            xcb_xfixes_copy_region(c, desktop_->changedParts(), windowParts_.id());
            xcb_xfixes_translate_region(c, windowParts_.id(), static_cast<std::int16_t>(-arrangement.canvas.x()),
                                        static_cast<std::int16_t>(-arrangement.canvas.y()));
            xcb_xfixes_union_region(c, changedParts_.id(), windowParts_.id(), changedParts_.id());
        }
    }
    return extent;
}

void WindowComposite::prepareCanvas(const QSize& size)
{
    if (size == canvasSize_)
        return;
    xcb_connection_t* const c = connection_.get();
    canvasPicture_ = {};
    canvas_ = {c, connection_.newId()};
    xcb_create_pixmap(c, kCanvasDepth, canvas_.id(), connection_.root(), static_cast<std::uint16_t>(size.width()),
                      static_cast<std::uint16_t>(size.height()));
    canvasPicture_ = {c, connection_.newId()};
    xcb_render_create_picture(c, canvasPicture_.id(), canvas_.id(), formats_.argb32().id, 0, nullptr);
    canvasSize_ = size;
}

void WindowComposite::paint(const Arrangement& arrangement, Extent extent)
{
    xcb_connection_t* const c = connection_.get();
    const xcb_xfixes_region_t clip = extent == Extent::Part ? changedParts_.id() : xcb_xfixes_region_t{XCB_NONE};
    xcb_xfixes_set_picture_clip_region(c, canvasPicture_.id(), clip, 0, 0);
    const xcb_render_color_t black{0, 0, 0, 0xffff};
    const xcb_rectangle_t all{0, 0, static_cast<std::uint16_t>(canvasSize_.width()),
                              static_cast<std::uint16_t>(canvasSize_.height())};
    xcb_render_fill_rectangles(c, XCB_RENDER_PICT_OP_SRC, canvasPicture_.id(), black, 1, &all);
    if (arrangement.desktop)
        desktop_->paint(canvasPicture_.id(), arrangement.canvas);
    for (const Layer& layer : arrangement.backToFront)
        paintWindow(layer, arrangement, extent);
}

void WindowComposite::paintWindow(const Layer& layer, const Arrangement& arrangement, Extent extent)
{
    xcb_connection_t* const c = connection_.get();
    const RedirectedWindow& window = *redirected_.at(layer.window);
    const QPoint corner = layer.outer.topLeft() - arrangement.canvas.topLeft();
    // Outside its shape the window's picture is undefined. The region is relative to the inside of the border. Should
    // the window vanish here, no region is made, and the clip must not be that of the window before.
    xcb_xfixes_set_picture_clip_region(c, canvasPicture_.id(), XCB_NONE, 0, 0);
    const RegionHandle shape(c, connection_.newId());
    xcb_xfixes_create_region_from_window(c, shape.id(), layer.window, XCB_SHAPE_SK_BOUNDING);
    xcb_xfixes_translate_region(c, shape.id(), static_cast<std::int16_t>(corner.x() + layer.border),
                                static_cast<std::int16_t>(corner.y() + layer.border));
    if (extent == Extent::Part)
        xcb_xfixes_intersect_region(c, shape.id(), changedParts_.id(), shape.id());
    xcb_xfixes_set_picture_clip_region(c, canvasPicture_.id(), shape.id(), 0, 0);
    const bool blend = arrangement.alpha && window.hasAlpha();
    xcb_render_composite(c, blend ? XCB_RENDER_PICT_OP_OVER : XCB_RENDER_PICT_OP_SRC, window.picture(), XCB_NONE,
                         canvasPicture_.id(), 0, 0, 0, 0, static_cast<std::int16_t>(corner.x()),
                         static_cast<std::int16_t>(corner.y()), static_cast<std::uint16_t>(layer.outer.width()),
                         static_cast<std::uint16_t>(layer.outer.height()));
}

} // namespace lumavex
