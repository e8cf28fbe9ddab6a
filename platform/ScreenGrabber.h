// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/ChangedArea.h"
#include "base/Geometry.h"

#include <QImage>
#include <QString>

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

namespace lumavex {

/// One on-screen window as the window system describes it: with its title bar and frame, as the user sees it, under the
/// number of the application's own window, which stays the same when the window manager is replaced.
struct WindowDescription {
    bool shared = true; ///< false: must not be offered (sharing state 0): not viewable, or wholly off the screen
    std::optional<QString> ownerName; ///< class of the owning application, else its process's name
    std::int64_t ownerPid = 0;        ///< 0 when unknown
    double x = 0;                     ///< top-left corner, y DOWNWARD from the top of the main display
    double y = 0;
    double width = 0;
    double height = 0;
    std::uint32_t number = 0; ///< the window number, also accepted by grabWindows
    std::int32_t layer = 0;   ///< 0 normal, above 0 kept above others, below 0 below (the desktop is lowest)
};

/// Selects the listed windows; bits.
enum WindowListOptions : std::uint32_t {
    ListAllWindows = 0,
    ListOnScreenOnly = 1, ///< only visible windows, and those that only other windows cover
};

/// Appearance of windows in a composite; bits.
enum WindowImageOptions : std::uint32_t {
    ImageDefault = 0, ///< as on the screen
    ImageOpaque = 2,  ///< without transparency, whether or not the screen blends
};

/// The rectangle that contains every other one.
inline constexpr CGRect infiniteRect{-std::numeric_limits<double>::max() / 2, -std::numeric_limits<double>::max() / 2,
                                     std::numeric_limits<double>::max(), std::numeric_limits<double>::max()};

/// A window as the user recognises it.
struct WindowLook {
    QString title; ///< empty for none
    QImage icon;   ///< Format_ARGB32; null for none
};

enum class GrabOutcome {
    Success, ///< `picture` is the current one
    Retry,   ///< nothing this time (a window vanished meanwhile, the screen is changing its size); try again
    GiveUp,  ///< will not work again; see `ScreenGrabber::trouble`
};

struct Grab {
    GrabOutcome outcome = GrabOutcome::Retry;
    /// Format_RGB32, top row first, stride may exceed 4 x width; the fourth byte of a pixel is UNDEFINED. Treat as
    /// immutable: the memory may be shared with the window system and is recycled with the last copy.
    QImage picture;
    /// Equal serials mean equal pixels. Never 0 for Success.
    std::uint64_t serial = 0;
    /// Area in which the picture may differ from those of earlier grabs of the same kind, by their serials; `latest` is
    /// this one's. Empty when nothing is known. Excludes parts that were drawn to but look unchanged.
    ChangeHistory changes = {};
};

/// Reads the main display and its windows. Main thread only; every call returns at once (about a millisecond).
class ScreenGrabber {
public:
    virtual ~ScreenGrabber() = default;

    /// Empty when the screen can be read; else the reason as text for the user. Set later when the screen is lost, or
    /// when windows were requested that this screen cannot show separately (the main display can still be grabbed
    /// then).
    virtual QString trouble() const = 0;

    /// The part of the session that no grab shows although the screen can be read, as text for the user; empty when
    /// nothing is missing. Called once, at the start.
    virtual QString limitation() = 0;

    /// Current size of the main display in device pixels.
    virtual CGSize sizeOfMainDisplay() = 0;

    /// The whole main display with all windows, without the mouse pointer. When nothing has changed since the previous
    /// call, returns the same picture with the same serial, without reading pixels.
    virtual Grab grabMainDisplay() = 0;

    /// A composite of the given windows, given front to back, correct even where others cover them. The picture has the
    /// size of the union of their bounds; a single window gives a picture of its size; areas without any of the windows
    /// are black. The desktop, anywhere in the list, lies behind all others and limits the picture to the main display,
    /// so that a window moved beyond the edge does not shift the rest. The picture ends at `imageBounds`. Retry when
    /// the list is empty, when no window of it can be read, or when none extends into the bounds. A window listed for
    /// the first time may lack the part that was covered until its application has drawn it, usually for one frame.
    /// `imageOptions` are WindowImageOptions.
    virtual Grab grabWindows(const std::vector<std::uint32_t>& frontToBack, const CGRect& imageBounds,
                             std::uint32_t imageOptions) = 0;
    /// Without bounds, as on the screen.
    Grab grabWindows(const std::vector<std::uint32_t>& frontToBack)
    {
        return grabWindows(frontToBack, infiniteRect, ImageDefault);
    }

    /// Position of the mouse pointer, in pixels from the LOWER-left corner of the main display, y upward: the pixel in
    /// the lower-left corner is (0, 0). Outside the main display the position is outside of its rectangle.
    virtual CGPoint mouseLocation() = 0;

    /// Changes whenever the result of windowDescriptions would change, at the latest with the next call of any other
    /// function. Makes no request to the window system. Never 0.
    virtual std::uint64_t windowsSerial() = 0;

    /// The windows front to back, including override-redirect ones; the desktop background is the last one, named
    /// "Desktop", with the bounds of the main display. `listOptions` are WindowListOptions.
    virtual std::vector<WindowDescription> windowDescriptions(std::uint32_t listOptions) = 0;

    /// Titles and icons of windows of windowDescriptions, in the same order. An icon is the smallest of the window's
    /// icons that is at least `iconSize` pixels high, else the largest. Windows that no longer exist have none.
    virtual std::vector<WindowLook> looksOf(const std::vector<std::uint32_t>& windows, int iconSize) = 0;

    /// True when the application's own part of the window is on the screen now. False at once for a window that was
    /// closed, minimised or left on another desktop, although its frame may stay visible for longer.
    virtual bool showsContents(std::uint32_t window) = 0;
};

} // namespace lumavex
