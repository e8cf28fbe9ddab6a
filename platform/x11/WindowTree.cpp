// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/x11/WindowTree.h"

#include <xcb/shape.h>

#include <algorithm>

namespace lumavex {

namespace {

/// A frame contains its client one to three levels down.
constexpr int kDeepestClient = 4;
/// Counted from the top, where frames keep their client; the frame's own parts, a few dozen with some window managers,
/// are below.
constexpr int kMostChildrenSearched = 64;

void watch(const XcbConnection& connection, xcb_window_t window, std::uint32_t events)
{
    xcb_change_window_attributes(connection.get(), window, XCB_CW_EVENT_MASK, &events);
}

} // namespace

WindowTree::WindowTree(const XcbConnection& connection) : connection_(connection)
{
    watch(connection_, connection_.root(),
          XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE);
}

const std::vector<TopLevel>& WindowTree::topToBottom()
{
    if (stale_)
        refresh();
    return topToBottom_;
}

bool WindowTree::note(const xcb_generic_event_t& event)
{
    const XcbExtensions& extensions = connection_.extensions();
    if (extensions.shape && (event.response_type & 0x7f) == extensions.shapeEvent + XCB_SHAPE_NOTIFY) {
        stale_ = true;
        return true;
    }
    switch (event.response_type & 0x7f) {
    case XCB_MAP_NOTIFY:
        forget(reinterpret_cast<const xcb_map_notify_event_t&>(event).window);
        return true;
    case XCB_UNMAP_NOTIFY:
        forget(reinterpret_cast<const xcb_unmap_notify_event_t&>(event).window);
        return true;
    case XCB_DESTROY_NOTIFY:
        forget(reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window);
        return true;
    case XCB_REPARENT_NOTIFY: {
        const auto& reparented = reinterpret_cast<const xcb_reparent_notify_event_t&>(event);
        forget(reparented.window);
        forget(reparented.parent);
        return true;
    }
    case XCB_CREATE_NOTIFY:
    case XCB_CONFIGURE_NOTIFY:
    case XCB_CIRCULATE_NOTIFY:
        stale_ = true;
        return true;
    case XCB_PROPERTY_NOTIFY:
        return noteProperty(reinterpret_cast<const xcb_property_notify_event_t&>(event));
    default:
        return false;
    }
}

void WindowTree::forget(xcb_window_t window)
{
    known_.erase(window);
    stale_ = true;
}

bool WindowTree::noteProperty(const xcb_property_notify_event_t& event)
{
    // Titles change often; only the properties from which facts are read matter.
    const auto is = [&](Atom atom) { return event.atom == connection_.atom(atom); };
    const bool matters = event.window == connection_.root()
                             ? is(Atom::NET_CLIENT_LIST)
                             : event.atom == XCB_ATOM_WM_CLASS || is(Atom::WM_STATE) || is(Atom::NET_WM_PID)
                                   || is(Atom::NET_WM_STATE) || is(Atom::NET_WM_WINDOW_TYPE)
                                   || is(Atom::GTK_FRAME_EXTENTS);
    if (matters) {
        known_.clear();
        stale_ = true;
    }
    return matters;
}

void WindowTree::refresh()
{
    stale_ = false;
    readShapes(childrenOfRoot());
    learnFacts();
    inheritOwners();
}

std::vector<xcb_window_t> WindowTree::childrenOfRoot()
{
    xcb_connection_t* const c = connection_.get();
    const auto treeCookie = xcb_query_tree(c, connection_.root());
    const auto ownerCookie = xcb_get_selection_owner(c, connection_.atom(Atom::NET_WM_CM_S));
    const XcbOwned<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(c, treeCookie, nullptr));
    const XcbOwned<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(c, ownerCookie, nullptr));
    compositingManager_ = owner && owner->owner != XCB_NONE;

    std::vector<xcb_window_t> windows;
    if (!tree)
        return windows;
    const xcb_window_t* const first = xcb_query_tree_children(tree.get());
    for (int i = xcb_query_tree_children_length(tree.get()) - 1; i >= 0; --i) {
        // Windows created by the server itself do not belong to the user: the overlay on which a compositing manager
        // paints the whole screen is one.
        if (first[i] & ~connection_.setup()->resource_id_mask)
            windows.push_back(first[i]);
    }
    return windows;
}

void WindowTree::readShapes(const std::vector<xcb_window_t>& windows)
{
    xcb_connection_t* const c = connection_.get();
    struct Cookies {
        xcb_get_window_attributes_cookie_t attributes;
        xcb_get_geometry_cookie_t geometry;
        xcb_shape_query_extents_cookie_t shape;
    };
    const bool shapes = connection_.extensions().shape;
    std::vector<Cookies> cookies;
    cookies.reserve(windows.size());
    for (const xcb_window_t window : windows) {
        if (shapes)
            xcb_shape_select_input(c, window, 1);
        cookies.push_back({xcb_get_window_attributes(c, window), xcb_get_geometry(c, window),
                           shapes ? xcb_shape_query_extents(c, window) : xcb_shape_query_extents_cookie_t{}});
    }

    topToBottom_.clear();
    for (std::size_t i = 0; i < windows.size(); ++i) {
        const XcbOwned<xcb_get_window_attributes_reply_t> attributes(
            xcb_get_window_attributes_reply(c, cookies[i].attributes, nullptr));
        const XcbOwned<xcb_get_geometry_reply_t> geometry(xcb_get_geometry_reply(c, cookies[i].geometry, nullptr));
        const XcbOwned<xcb_shape_query_extents_reply_t> shape(
            shapes ? xcb_shape_query_extents_reply(c, cookies[i].shape, nullptr) : nullptr);
        if (!attributes || !geometry)
            continue;
        TopLevel top;
        top.window = windows[i];
        top.client = windows[i];
        top.border = geometry->border_width;
        top.outer = {geometry->x, geometry->y, geometry->width + 2 * top.border, geometry->height + 2 * top.border};
        top.visual = attributes->visual;
        top.viewable =
            attributes->map_state == XCB_MAP_STATE_VIEWABLE && attributes->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT;
        top.overrideRedirect = attributes->override_redirect != 0;
        top.shaped = shape && shape->bounding_shaped != 0;
        topToBottom_.push_back(top);
    }
}

void WindowTree::learnFacts()
{
    std::vector<xcb_window_t> unknown;
    for (const TopLevel& top : topToBottom_) {
        if (top.viewable && !known_.contains(top.window))
            unknown.push_back(top.window);
    }
    const auto clients = findClients(unknown);
    std::vector<std::pair<xcb_window_t, WindowFactsRequest>> requests;
    requests.reserve(unknown.size());
    for (const xcb_window_t window : unknown)
        requests.emplace_back(window, WindowFactsRequest(connection_, clients.at(window)));
    for (const auto& [window, request] : requests)
        known_.insert_or_assign(window, Known{clients.at(window), request.answer()});

    for (TopLevel& top : topToBottom_) {
        const auto known = known_.find(top.window);
        if (!top.viewable || known == known_.end())
            continue;
        top.client = known->second.client;
        top.facts = known->second.facts;
        // A frame is override-redirect, too, but the window manager manages its client.
        if (top.overrideRedirect && top.client == top.window && top.facts.layer == 0)
            top.facts.layer = kLayerUnmanaged;
    }
}

/// The client of each window: the first window with a WM_STATE property, which window managers set on every client and
/// on no other window (ICCCM 4.1.3.1), in it or below it; the window itself when there is none.
std::unordered_map<xcb_window_t, xcb_window_t> WindowTree::findClients(const std::vector<xcb_window_t>& tops) const
{
    struct Candidate {
        xcb_window_t top;
        xcb_window_t window;
        xcb_get_property_cookie_t state{};
        xcb_query_tree_cookie_t tree{};
    };
    xcb_connection_t* const c = connection_.get();
    std::unordered_map<xcb_window_t, xcb_window_t> clients;
    std::vector<Candidate> level;
    for (const xcb_window_t top : tops)
        level.push_back({top, top});
    for (int depth = 0; depth < kDeepestClient && !level.empty(); ++depth) {
        for (Candidate& candidate : level) {
            watch(connection_, candidate.window, XCB_EVENT_MASK_PROPERTY_CHANGE);
            candidate.state = xcb_get_property(c, 0, candidate.window, connection_.atom(Atom::WM_STATE),
                                               XCB_GET_PROPERTY_TYPE_ANY, 0, 0);
            candidate.tree = xcb_query_tree(c, candidate.window);
        }
        std::vector<Candidate> next;
        for (const Candidate& candidate : level) {
            const XcbOwned<xcb_get_property_reply_t> state(xcb_get_property_reply(c, candidate.state, nullptr));
            const XcbOwned<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(c, candidate.tree, nullptr));
            if (state && state->type != XCB_ATOM_NONE)
                clients.try_emplace(candidate.top, candidate.window);
            if (!tree || clients.contains(candidate.top))
                continue;
            const xcb_window_t* const children = xcb_query_tree_children(tree.get());
            const int count = xcb_query_tree_children_length(tree.get());
            for (int i = count - 1; i >= std::max(0, count - kMostChildrenSearched); --i)
                next.push_back({candidate.top, children[i]});
        }
        std::erase_if(next, [&](const Candidate& candidate) { return clients.contains(candidate.top); });
        level = std::move(next);
    }
    for (const xcb_window_t top : tops)
        clients.try_emplace(top, top);
    return clients;
}

/// Menus and tooltips often do not name their owner, but all window ids of a program share their leading bits.
void WindowTree::inheritOwners()
{
    const auto programOf = [&](const TopLevel& top) { return top.client & ~connection_.setup()->resource_id_mask; };
    std::unordered_map<std::uint32_t, const WindowFacts*> owners;
    for (const TopLevel& top : topToBottom_) {
        if (top.viewable && top.facts.ownerName)
            owners.try_emplace(programOf(top), &top.facts);
    }
    for (TopLevel& top : topToBottom_) {
        const auto owner = owners.find(programOf(top));
        if (!top.viewable || top.facts.ownerName || owner == owners.end())
            continue;
        top.facts.ownerName = owner->second->ownerName;
        top.facts.ownerPid = owner->second->ownerPid;
    }
}

} // namespace lumavex
