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

/// A picture to paint.
struct PaintRequest {
    std::vector<TopLevel> frontToBack;
    std::vector<TopLevel> alsoKept; ///< not painted, but their pictures are kept for a later request
    bool desktop = false;           ///< not painted, but their pictures are kept for a later request
    bool backdrop = true;           ///< the windows leave an area free, in which the desktop or black is visible
    bool alpha = false;             ///< windows with transparency are blended, as a compositing manager shows them
    QRect canvas;                   ///< area of the picture, in root coordinates
    QSize rootSize;
    /// Only these places of the canvas, relative to its corner, in the screen's pixel format; std::nullopt: the whole
    /// canvas in Format_RGB32.
    std::optional<std::vector<QRect>> places;
};

/// Paints chosen windows, without the windows that cover them, into a canvas inside the server. Main thread.
class WindowPainter {
public:
    explicit WindowPainter(const XcbConnection& connection);

    /// Determines the area to repaint. Sends most of its requests without waiting, so that screen damage requested next
    /// is of the same moment. False when no window of the request can be read at the moment.
    bool prepare(const PaintRequest& request);
    /// Paints that area and returns it, relative to the canvas' corner.
    ChangedArea paint();
    xcb_drawable_t canvas() const { return canvas_.id(); }
    /// Replaces paint() for a caller that reads the picture of the only window: returns the area without painting.
    ChangedArea skipPainting();
    /// The picture of the only window, and its corner in root coordinates. std::nullopt when it cannot be read.
    std::optional<std::pair<xcb_drawable_t, QPoint>> onlyWindow() const;
    /// The canvas was not read: the next call paints everything.
    void repaint() { shown_.reset(); }
    /// Ends the redirection of all windows.
    void release();
    void note(const xcb_generic_event_t& event);

private:
    /// Extent of the picture to repaint: Part refers to changedParts_.
    enum class Extent { Nothing, Part, All };

    /// The place of one window in the picture. Equal layers without damage look the same.
    struct Layer {
        xcb_window_t window;
        std::uint64_t generation;
        QRect outer;
        int border;
        friend bool operator==(const Layer&, const Layer&) = default;
    };
    /// All inputs of a picture except the windows' contents.
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
    std::unique_ptr<DesktopBackground> desktop_; ///< created on first use
    std::unordered_map<xcb_window_t, Redirection> redirected_;
    PixmapHandle canvas_;
    PictureHandle canvasPicture_;
    QSize canvasSize_;
    bool canvasLikeScreen_ = false;
    RegionHandle changedParts_;        ///< in the canvas
    RegionHandle windowParts_;         ///< of one window, while they are collected
    RegionHandle placesRegion_;        ///< of the wanted arrangement
    Arrangement wanted_;               ///< set by prepare()
    Extent extent_ = Extent::Nothing;  ///< extent that paint() paints
    std::optional<Arrangement> shown_; ///< in the canvas; std::nullopt: to be repainted
};

} // namespace lumavex
