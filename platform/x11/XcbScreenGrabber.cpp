// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/x11/XcbScreenGrabber.h"

#include "platform/PlatformText.h"
#include "platform/x11/MainDisplay.h"
#include "platform/x11/MendedDisplay.h"
#include "platform/x11/PixelLayout.h"
#include "platform/x11/SharedImagePool.h"
#include "platform/x11/WindowComposite.h"
#include "platform/x11/WindowLooks.h"
#include "platform/x11/WindowTree.h"
#include "platform/x11/XWayland.h"
#include "platform/x11/XcbConnection.h"

#include <algorithm>
#include <optional>

namespace lumavex {

namespace {

/// Name of the desktop's background in the list of windows.
constexpr auto kDesktopName = "Desktop";

/// The intersection of an area in root coordinates and the bounds, upward on the display.
QRect commonPart(const QRect& area, const CGRect& bounds, const QRect& display)
{
    const QRectF down = flippedDown(bounds, display.height()).translated(display.topLeft());
    return (QRectF(area) & down).toAlignedRect();
}

class XcbScreenGrabber final : public ScreenGrabber {
public:
    XcbScreenGrabber();

    QString trouble() const override;
    QString limitation() override;
    CGSize sizeOfMainDisplay() override;
    Grab grabMainDisplay() override;
    using ScreenGrabber::grabWindows;
    Grab grabWindows(const std::vector<std::uint32_t>& frontToBack, const CGRect& imageBounds,
                     std::uint32_t imageOptions) override;
    CGPoint mouseLocation() override;
    std::uint64_t windowsSerial() override;
    std::vector<WindowDescription> windowDescriptions(std::uint32_t listOptions) override;
    std::vector<WindowLook> looksOf(const std::vector<std::uint32_t>& windows, int iconSize) override;
    bool showsContents(std::uint32_t window) override;

private:
    /// Parts that need a screen that can be recorded.
    struct Parts {
        Parts(const XcbConnection& connection, const PixelLayout& screenLayout)
            : display(connection), tree(connection), pool(connection), painter(connection),
              mended(connection, pool, painter, screenLayout), composite(painter, pool)
        {
        }
        MainDisplay display;
        WindowTree tree;
        SharedImagePool pool;
        WindowPainter painter;
        MendedDisplay mended;
        WindowComposite composite;
    };

    bool usable() const { return parts_ && connection_.alive(); }
    bool composites() const;
    GrabOutcome failure() const { return usable() ? GrabOutcome::Retry : GrabOutcome::GiveUp; }
    void listen();
    PaintRequest requestFor(const std::vector<std::uint32_t>& frontToBack, const CGRect& imageBounds,
                            std::uint32_t imageOptions);
    std::optional<MendingRequest> asPartOfScreen(const PaintRequest& request, bool orderMayBeOld);
    Grab grabListed(const std::vector<std::uint32_t>& frontToBack, const CGRect& imageBounds,
                    std::uint32_t imageOptions);

    XcbConnection connection_;
    QString screenTrouble_;
    std::unique_ptr<Parts> parts_; ///< null: the screen cannot be recorded
    std::uint64_t windowsSerial_ = 1;
};

XcbScreenGrabber::XcbScreenGrabber()
{
    if (!connection_.alive())
        return;
    const auto layout = pixelLayoutOf(connection_, screenTrouble_);
    if (!layout)
        return;
    parts_ = std::make_unique<Parts>(connection_, *layout);
}

bool XcbScreenGrabber::composites() const
{
    const XcbExtensions& extensions = connection_.extensions();
    return extensions.composite && extensions.render && extensions.fixes;
}

QString XcbScreenGrabber::trouble() const
{
    return connection_.alive() ? screenTrouble_ : connection_.trouble();
}

QString XcbScreenGrabber::limitation()
{
    return isXWayland(connection_)
               ? PlatformText::tr("This is a Wayland session: its windows cannot be recorded yet. Log in to "
                                  "an X11 session to record the screen.")
               : QString();
}

void XcbScreenGrabber::listen()
{
    connection_.drain([this](const xcb_generic_event_t& event) {
        const bool otherDisplay = parts_->display.note(event);
        const bool otherWindows = parts_->tree.note(event);
        if (otherDisplay || otherWindows)
            ++windowsSerial_;
        parts_->painter.note(event);
    });
}

CGSize XcbScreenGrabber::sizeOfMainDisplay()
{
    if (!usable())
        return {};
    connection_.sync();
    listen();
    const QRect& rect = parts_->display.rect();
    return {static_cast<double>(rect.width()), static_cast<double>(rect.height())};
}

Grab XcbScreenGrabber::grabMainDisplay()
{
    if (!usable())
        return {GrabOutcome::GiveUp, {}, 0};
    parts_->painter.release();
    parts_->composite.forget();
    const Grab grab = parts_->mended.grabAsItIs([this] {
        listen();
        return parts_->display.rect();
    });
    return grab.outcome == GrabOutcome::Success ? grab : Grab{failure(), {}, 0};
}

Grab XcbScreenGrabber::grabWindows(const std::vector<std::uint32_t>& frontToBack, const CGRect& imageBounds,
                                   std::uint32_t imageOptions)
{
    if (!usable())
        return {GrabOutcome::GiveUp, {}, 0};
    if (!composites()) {
        screenTrouble_ = PlatformText::tr(
            "This X server cannot show windows one by one (it lacks the extensions Composite, Render or "
            "XFixes): only the whole screen can be recorded.");
        return {GrabOutcome::GiveUp, {}, 0};
    }
    const Grab grab = grabListed(frontToBack, imageBounds, imageOptions);
    return grab.outcome == GrabOutcome::Success ? grab : Grab{failure(), {}, 0};
}

/// Windows may move at any time. A picture read during a move shows excluded windows at unexpected places: it is read
/// again while the server serves no other client.
Grab XcbScreenGrabber::grabListed(const std::vector<std::uint32_t>& frontToBack, const CGRect& imageBounds,
                                  std::uint32_t imageOptions)
{
    const std::uint64_t askedAt = windowsSerial_;
    for (const bool alone : {false, true}) {
        const ServerGrab grab(alone ? connection_.get() : nullptr);
        connection_.sync();
        listen();
        const PaintRequest request = requestFor(frontToBack, imageBounds, imageOptions);
        const std::uint64_t serial = windowsSerial_;
        const auto unmoved = [&] {
            listen();
            return serial == windowsSerial_;
        };
        const auto part = asPartOfScreen(request, serial != askedAt);
        auto result = MendedDisplay::Result{MendedDisplay::Obstacle::TooMuch, {}};
        if (part)
            result = parts_->mended.grab(*part, request.rootSize, unmoved);
        if (result.obstacle == MendedDisplay::Obstacle::TooMuch)
            return parts_->composite.compose(request);
        if (result.obstacle == MendedDisplay::Obstacle::None)
            return result.grab;
    }
    return {};
}

/// Expresses the request as the screen without some windows. std::nullopt when this is impossible: the windows are in
/// another order or extend beyond the screen.
std::optional<MendingRequest> XcbScreenGrabber::asPartOfScreen(const PaintRequest& request, bool orderMayBeOld)
{
    if (request.canvas.isEmpty() || !parts_->display.root().contains(request.canvas)
        || request.alpha != parts_->tree.compositingManagerRuns())
        return std::nullopt;
    const xcb_screen_t& screen = *connection_.screen();
    MendingRequest part{
        {}, request.desktop, request.alpha, screen.root_depth == 32 ? 0 : screen.root_visual, request.canvas};
    std::size_t next = 0;
    bool inOrder = true;
    for (const TopLevel& top : parts_->tree.topToBottom()) {
        if (!top.viewable)
            continue;
        const auto& listed = request.frontToBack;
        const bool shown = std::any_of(listed.begin(), listed.end(),
                                       [&](const TopLevel& other) { return other.window == top.window; });
        inOrder = inOrder && (!shown || listed[next].window == top.window);
        next += shown ? 1 : 0;
        part.topToBottom.push_back({top, shown});
    }
    if (!inOrder && !orderMayBeOld)
        return std::nullopt;
    return part;
}

PaintRequest XcbScreenGrabber::requestFor(const std::vector<std::uint32_t>& frontToBack, const CGRect& imageBounds,
                                          std::uint32_t imageOptions)
{
    PaintRequest request;
    const auto& tops = parts_->tree.topToBottom();
    for (const std::uint32_t number : frontToBack) {
        request.desktop = request.desktop || number == connection_.root();
        const auto top = std::find_if(tops.begin(), tops.end(), [&](const TopLevel& candidate) {
            return candidate.client == number || candidate.window == number;
        });
        const auto isListed = [&] {
            return std::any_of(request.frontToBack.begin(), request.frontToBack.end(),
                               [&](const TopLevel& listed) { return listed.window == top->window; });
        };
        if (top == tops.end() || !top->viewable || isListed())
            continue;
        request.canvas |= top->bounds();
        request.frontToBack.push_back(*top);
    }
    if (request.desktop)
        request.canvas = parts_->display.rect();
    request.canvas = commonPart(request.canvas, imageBounds, parts_->display.rect());
    request.alpha = !(imageOptions & ImageOpaque) && parts_->tree.compositingManagerRuns();
    request.rootSize = parts_->display.root().size();
    return request;
}

CGPoint XcbScreenGrabber::mouseLocation()
{
    if (!usable())
        return {};
    xcb_connection_t* const c = connection_.get();
    const XcbOwned<xcb_query_pointer_reply_t> pointer(
        xcb_query_pointer_reply(c, xcb_query_pointer(c, connection_.root()), nullptr));
    if (!pointer)
        return {};
    listen();
    const QRect& rect = parts_->display.rect();
    return {static_cast<double>(pointer->root_x - rect.left()), static_cast<double>(rect.bottom() - pointer->root_y)};
}

std::uint64_t XcbScreenGrabber::windowsSerial()
{
    if (usable())
        listen();
    return usable() ? windowsSerial_ : ~windowsSerial_;
}

std::vector<WindowDescription> XcbScreenGrabber::windowDescriptions(std::uint32_t listOptions)
{
    std::vector<WindowDescription> descriptions;
    if (!usable())
        return descriptions;
    connection_.sync();
    listen();
    const QRect rect = parts_->display.rect();
    for (const TopLevel& top : parts_->tree.topToBottom()) {
        const QRect bounds = top.bounds();
        const bool onScreen = top.viewable && parts_->display.root().intersects(bounds);
        if (!onScreen && (listOptions & ListOnScreenOnly))
            continue;
        WindowDescription description;
        description.shared = onScreen;
        description.ownerName = top.facts.ownerName;
        description.ownerPid = top.facts.ownerPid;
        description.x = bounds.x() - rect.x();
        description.y = bounds.y() - rect.y();
        description.width = bounds.width();
        description.height = bounds.height();
        description.number = top.client;
        description.layer = top.facts.layer;
        descriptions.push_back(description);
    }
    if (!connection_.alive())
        return {};
    WindowDescription desktop;
    desktop.ownerName = QString::fromLatin1(kDesktopName);
    desktop.width = rect.width();
    desktop.height = rect.height();
    desktop.number = connection_.root();
    desktop.layer = kLayerBackground;
    descriptions.push_back(desktop);
    return descriptions;
}

std::vector<WindowLook> XcbScreenGrabber::looksOf(const std::vector<std::uint32_t>& windows, int iconSize)
{
    return usable() ? looksOfWindows(connection_, windows, iconSize) : std::vector<WindowLook>(windows.size());
}

bool XcbScreenGrabber::showsContents(std::uint32_t window)
{
    if (!usable())
        return false;
    xcb_connection_t* const c = connection_.get();
    const XcbOwned<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(c, xcb_get_window_attributes(c, window), nullptr));
    return attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
}

} // namespace

std::unique_ptr<ScreenGrabber> createXcbScreenGrabber()
{
    return std::make_unique<XcbScreenGrabber>();
}

} // namespace lumavex
