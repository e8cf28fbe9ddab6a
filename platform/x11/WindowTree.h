// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/x11/WindowFacts.h"
#include "platform/x11/XcbConnection.h"

#include <QRect>

#include <unordered_map>
#include <vector>

namespace lumavex {

/// A child of the root window: a window manager's frame with its client, or a window without a frame.
struct TopLevel {
    xcb_window_t window = XCB_NONE; ///< the child of the root
    xcb_window_t client = XCB_NONE; ///< the application's window inside it; `window` itself when there is no frame
    QRect outer;                    ///< including frame and border, in root coordinates, y downward
    int border = 0;
    xcb_visualid_t visual = 0;
    bool viewable = false; ///< mapped, and not an input-only window
    bool overrideRedirect = false;
    bool shaped = false; ///< may not fill its rectangle; set for viewable windows only
    WindowFacts facts;   ///< for viewable windows only

    /// The visible window: without the shadow's margin.
    QRect bounds() const { return outer.marginsRemoved(facts.shadow); }
};

/// The windows of the screen. Reads the server's tree again only after events that change it: in two round trips when
/// windows moved, in about five when they were created, destroyed or changed their properties, whatever their number.
/// Main thread.
class WindowTree {
public:
    explicit WindowTree(const XcbConnection& connection);

    /// Top to bottom, as of the latest drained events. The reference is valid until the next call.
    const std::vector<TopLevel>& topToBottom();
    /// True when a compositing manager shows the windows' transparency, as of topToBottom().
    bool compositingManagerRuns() const { return compositingManager_; }
    /// True when the event may change the windows.
    bool note(const xcb_generic_event_t& event);

private:
    struct Known {
        xcb_window_t client;
        WindowFacts facts;
    };

    void refresh();
    std::vector<xcb_window_t> childrenOfRoot();
    void readShapes(const std::vector<xcb_window_t>& windows);
    void learnFacts();
    std::unordered_map<xcb_window_t, xcb_window_t> findClients(const std::vector<xcb_window_t>& tops) const;
    void inheritOwners();
    bool noteProperty(const xcb_property_notify_event_t& event);
    void forget(xcb_window_t window);

    const XcbConnection& connection_;
    bool stale_ = true;
    bool compositingManager_ = false;
    std::unordered_map<xcb_window_t, Known> known_; ///< key: child of the root
    std::vector<TopLevel> topToBottom_;
};

} // namespace lumavex
