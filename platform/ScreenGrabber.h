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
/// number of the application's own window, which stays the same when the window manager is exchanged.
struct WindowDescription {
    bool shared = true; ///< false: not to be offered (sharing state 0): not viewable, or wholly off the screen
    std::optional<QString> ownerName; ///< class of the owning application, else its process's name
    std::int64_t ownerPid = 0;        ///< 0 when unknown
    double x = 0;                     ///< top-left corner, y DOWNWARD from the top of the main display
    double y = 0;
    double width = 0;
    double height = 0;
    std::uint32_t number = 0; ///< the window number, also accepted by grabWindows
    std::int32_t layer = 0;   ///< 0 normal, above 0 kept above others, below 0 below (the desktop is lowest)
};

/// Which windows are listed; bits.
enum WindowListOptions : std::uint32_t {
    ListAllWindows = 0,
    ListOnScreenOnly = 1, ///< only those that can be seen, or could if others did not cover them
};

/// How windows look in a composite; bits.
enum WindowImageOptions : std::uint32_t {
    ImageDefault = 0, ///< as on the screen
    ImageOpaque = 2,  ///< without transparency, whether or not the screen blends
};

/// The rectangle that contains every other one.
inline constexpr CGRect infiniteRect{-std::numeric_limits<double>::max() / 2, -std::numeric_limits<double>::max() / 2,
                                     std::numeric_limits<double>::max(), std::numeric_limits<double>::max()};

/// A window as the user knows it.
struct WindowLook {
    QString title; ///< empty when it has none
    QImage icon;   ///< Format_ARGB32; null when it has none
};

enum class GrabOutcome {
    Success, ///< `picture` is the current one
    Retry,   ///< nothing this time (a window vanished meanwhile, the screen is changing its size); ask again
    GiveUp,  ///< will not work again; `ScreenGrabber::trouble` says why
};

struct Grab {
    GrabOutcome outcome = GrabOutcome::Retry;
    /// Format_RGB32, first row on top, stride may exceed 4 x width; the fourth byte of a pixel is UNDEFINED.
    /// Treat as immutable: the memory may be shared with the window system and is recycled when the last copy goes.
    QImage picture;
    /// Equal serials mean equal pixels. Never 0 for Success.
    std::uint64_t serial = 0;
    /// Where the picture may differ from those that earlier grabs of the same kind gave, by their serials; `latest` is
    /// this one's. Empty when nothing is known. A part that was drawn to, but looks as before, is left out.
    ChangeHistory changes = {};
};

/// Reads the main display and its windows. Main thread only; every call answers at once (about a millisecond).
class ScreenGrabber {
public:
    virtual ~ScreenGrabber() = default;

    /// Empty when the screen can be read; else why not, in the user's words. Set later when the screen is lost, or when
    /// windows were asked for that this screen cannot show one by one (the main display can still be grabbed then).
    virtual QString trouble() const = 0;

    /// What of the session no grab shows although the screen can be read, in the user's words; empty when nothing is
    /// missing. Asked once, at the start.
    virtual QString limitation() = 0;

    /// Size of the main display in device pixels as it is now.
    virtual CGSize sizeOfMainDisplay() = 0;

    /// The whole main display with all windows, without the mouse pointer. When nothing changed since the previous
    /// call the same picture with the same serial comes back, without touching pixels.
    virtual Grab grabMainDisplay() = 0;

    /// A composite of the given windows, given front to back, correct also where others cover them. The picture is as
    /// large as the union of their bounds; one window alone gives a picture of its size; where none of the windows is,
    /// it is black. With the desktop among them (wherever in the list) it lies behind all others and the picture is the
    /// main display, no more, so that a window pushed beyond the edge does not shift the rest. Nothing outside
    /// `imageBounds` is in the picture, which ends there. Retry when the list is empty, no window of it can be read or
    /// none reaches into the bounds. A window listed for the first time may lack what covered it until its application
    /// has drawn that, usually for one frame.
    /// `imageOptions` are WindowImageOptions.
    virtual Grab grabWindows(const std::vector<std::uint32_t>& frontToBack, const CGRect& imageBounds,
                             std::uint32_t imageOptions) = 0;
    /// With all of it and as on the screen.
    Grab grabWindows(const std::vector<std::uint32_t>& frontToBack)
    {
        return grabWindows(frontToBack, infiniteRect, ImageDefault);
    }

    /// Where the mouse pointer is, in pixels from the LOWER-left corner of the main display, y upward: the pixel in the
    /// lower-left corner is (0, 0). Outside the main display it is outside of its rectangle.
    virtual CGPoint mouseLocation() = 0;

    /// Changes whenever windowDescriptions would give another answer, at the latest with the next call of any other
    /// function after that. Asks nobody. Never 0.
    virtual std::uint64_t windowsSerial() = 0;

    /// The windows front to back, override-redirect ones included; the desktop background is the last one, named
    /// "Desktop", with the bounds of the main display. `listOptions` are WindowListOptions.
    virtual std::vector<WindowDescription> windowDescriptions(std::uint32_t listOptions) = 0;

    /// The looks of windows of windowDescriptions, in the same order. An icon is the smallest that is at least
    /// `iconSize` pixels high among those that the window offers, else the largest. Windows that have gone have none.
    virtual std::vector<WindowLook> looksOf(const std::vector<std::uint32_t>& windows, int iconSize) = 0;

    /// Whether the application's own part of the window is on the screen now. False for a window that was closed,
    /// minimised or left on another desktop, at once: its frame may be seen for longer.
    virtual bool showsContents(std::uint32_t window) = 0;
};

} // namespace lumavex
