// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/ChangedArea.h"
#include "platform/x11/DesktopBackground.h"
#include "platform/x11/RedirectedWindow.h"
#include "platform/x11/RenderFormats.h"
#include "platform/x11/WindowTree.h"
#include "platform/x11/XcbConnection.h"

#include <QRect>

#include <chrono>
#include <memory>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

namespace lumavex {

/// What is to be painted.
struct PaintRequest {
    std::vector<TopLevel> frontToBack;
    std::vector<TopLevel> alsoKept; ///< not painted, but their pictures are kept for a later request
    bool desktop = false;           ///< the desktop's background behind them all
    bool backdrop = true;           ///< they leave something free, where the desktop or black is seen
    bool alpha = false;             ///< windows with transparency are blended, as a compositing manager shows them
    QRect canvas;                   ///< the area of the picture, in root coordinates
    QSize rootSize;
    /// Only these places of the canvas, relative to its corner, in pixels like the screen's; nothing: everywhere, in
    /// pixels of Format_RGB32.
    std::optional<std::vector<QRect>> places;
};

/// Paints chosen windows, and nothing that covers them, into a canvas inside the server. Main thread.
class WindowPainter {
public:
    explicit WindowPainter(const XcbConnection& connection);

    /// Finds out what is to be painted anew: sends most of its requests without waiting, so that damage of the screen
    /// asked for next is of the same moment. False when no window of the request can be read at the moment.
    bool prepare(const PaintRequest& request);
    /// Paints that, and tells where it is, relative to the canvas' corner.
    ChangedArea paint();
    xcb_drawable_t canvas() const { return canvas_.id(); }
    /// Instead of paint(), for a caller who reads the picture of the only window: tells where that is.
    ChangedArea skipPainting();
    /// The picture of the only window, and its corner in root coordinates. Nothing when it cannot be read.
    std::optional<std::pair<xcb_drawable_t, QPoint>> onlyWindow() const;
    /// The canvas was not read: the next painting is of everything.
    void repaint() { shown_.reset(); }
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
        bool backdrop = true;
        bool alpha = false;
        QRect canvas;
        std::optional<std::vector<QRect>> places;
        friend bool operator==(const Arrangement&, const Arrangement&) = default;
    };

    using Clock = std::chrono::steady_clock;
    struct Redirection {
        std::unique_ptr<RedirectedWindow> window;
        Clock::time_point needed;
    };

    void redirect(const PaintRequest& request);
    void redirect(const TopLevel& top, Clock::time_point now);
    Arrangement arrange(const PaintRequest& request);
    Extent takeChanges(const PaintRequest& request);
    Extent takeChangesOfDesktop(const PaintRequest& request);
    void setPlaces(const PaintRequest& request);
    void prepareCanvas();
    void paintLayers();
    void paintWindow(const Layer& layer);

    const XcbConnection& connection_;
    const RenderFormats formats_;
    std::unique_ptr<DesktopBackground> desktop_; ///< made when first asked for
    std::unordered_map<xcb_window_t, Redirection> redirected_;
    PixmapHandle canvas_;
    PictureHandle canvasPicture_;
    QSize canvasSize_;
    bool canvasLikeScreen_ = false;
    RegionHandle changedParts_;        ///< in the canvas
    RegionHandle windowParts_;         ///< of one window, while they are gathered
    RegionHandle placesRegion_;        ///< of the wanted arrangement
    Arrangement wanted_;               ///< by prepare()
    Extent extent_ = Extent::Nothing;  ///< of what paint() is to paint
    std::optional<Arrangement> shown_; ///< in the canvas; nothing: it is to be painted anew
};

} // namespace lumavex
