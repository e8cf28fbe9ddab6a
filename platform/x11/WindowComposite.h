// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/x11/DesktopBackground.h"
#include "platform/x11/GrabSeries.h"
#include "platform/x11/RedirectedWindow.h"
#include "platform/x11/RenderFormats.h"
#include "platform/x11/SharedImagePool.h"
#include "platform/x11/WindowTree.h"
#include "platform/x11/XcbConnection.h"

#include <QRect>

#include <memory>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

namespace lumavex {

/// What a composite is made of.
struct CompositeRequest {
    std::vector<TopLevel> frontToBack;
    bool desktop = false; ///< the desktop's background behind them all
    bool alpha = false;   ///< windows with transparency are blended, as a compositing manager shows them
    QRect canvas;         ///< the area of the picture, in root coordinates
    QSize rootSize;
};

/// Paints chosen windows, and nothing that covers them, into one picture inside the server and reads that. Main thread.
class WindowComposite {
public:
    /// The arguments outlive this.
    WindowComposite(const XcbConnection& connection, SharedImagePool& pool);

    /// Retry when no window of the request can be read at the moment.
    Grab compose(const CompositeRequest& request);
    /// Lets the server show all windows in its usual way again.
    void release();
    void note(const xcb_generic_event_t& event);

private:
    /// How much of the picture is to be painted anew: Part is what changedParts_ holds.
    enum class Extent { Nothing, Part, All };

    /// One window's place in the picture. Equal layers without damage look the same.
    struct Layer {
        xcb_window_t window;
        std::uint64_t generation;
        QRect outer;
        int border;
        friend bool operator==(const Layer&, const Layer&) = default;
    };
    /// Everything a picture depends on but for the windows' contents.
    struct Arrangement {
        std::vector<Layer> backToFront;
        bool desktop = false;
        bool alpha = false;
        QRect canvas;
        friend bool operator==(const Arrangement&, const Arrangement&) = default;
    };

    void redirectExactly(const std::vector<TopLevel>& windows);
    Arrangement arrange(const CompositeRequest& request);
    Extent takeChanges(const CompositeRequest& request, const Arrangement& arrangement);
    void prepareCanvas(const QSize& size);
    void paint(const Arrangement& arrangement, Extent extent);
    void paintWindow(const Layer& layer, const Arrangement& arrangement, Extent extent);

    const XcbConnection& connection_;
    GrabSeries series_; ///< of the canvas
    const RenderFormats formats_;
    std::unique_ptr<DesktopBackground> desktop_; ///< made when first asked for
    std::unordered_map<xcb_window_t, std::unique_ptr<RedirectedWindow>> redirected_;
    PixmapHandle canvas_;
    PictureHandle canvasPicture_;
    QSize canvasSize_;
    RegionHandle changedParts_;        ///< in the canvas
    RegionHandle windowParts_;         ///< of one window, while they are gathered
    std::optional<Arrangement> shown_; ///< in the canvas; nothing: it is to be painted anew
};

} // namespace lumavex
