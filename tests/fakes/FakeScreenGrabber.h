// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/ScreenGrabber.h"

#include <deque>
#include <functional>
#include <utility>
#include <vector>

namespace lumavex {

/// A screen of pictures that tests set, exact to the pixel. Main thread.
class FakeScreenGrabber final : public ScreenGrabber {
public:
    struct Window {
        WindowDescription description; ///< its width and height are those of `picture`
        QImage picture;
        WindowLook look = {};
        bool showsContents = true;
    };

    /// Sets the content and size of the main display. `windows` are not drawn into it. Grabs report the bounding
    /// rectangle of the pixels that differ from the previous content.
    void setScreen(const QImage& picture);
    /// Front to back, without the desktop's background.
    void setWindows(std::vector<Window> windows);
    /// The background behind all windows and its entry, the last one of windowDescriptions.
    void setDesktop(const QImage& picture);
    void setMouseLocation(const CGPoint& location) { mouseLocation_ = location; }
    /// All later grabs fail with this reason; an empty one ends that.
    void setTrouble(const QString& trouble) { trouble_ = trouble; }
    void setLimitation(const QString& limitation) { limitation_ = limitation; }
    /// The outcome of the next grab of either kind that has none yet; further calls queue up.
    void addOutcome(GrabOutcome outcome) { outcomes_.push_back(outcome); }
    /// Called when a grab of either kind begins: may let time pass, or change the screen's content.
    void setWork(std::function<void()> work) { work_ = std::move(work); }

    int grabsOfMainDisplay() const { return grabsOfMainDisplay_; }
    int windowEnumerations() const { return windowEnumerations_; }
    /// The list of each call of grabWindows.
    const std::vector<std::vector<std::uint32_t>>& grabsOfWindows() const { return grabsOfWindows_; }

    QString trouble() const override { return trouble_; }
    QString limitation() override { return limitation_; }
    CGSize sizeOfMainDisplay() override;
    Grab grabMainDisplay() override;
    using ScreenGrabber::grabWindows;
    Grab grabWindows(const std::vector<std::uint32_t>& frontToBack, const CGRect& imageBounds,
                     std::uint32_t imageOptions) override;
    CGPoint mouseLocation() override { return mouseLocation_; }
    std::uint64_t windowsSerial() override { return windowsSerial_; }
    std::vector<WindowDescription> windowDescriptions(std::uint32_t listOptions) override;
    std::vector<WindowLook> looksOf(const std::vector<std::uint32_t>& windows, int iconSize) override;
    bool showsContents(std::uint32_t window) override;

    static constexpr std::uint32_t kDesktopNumber = 1;

private:
    GrabOutcome beginGrab();
    void noteChange(ChangeHistory& history, const QImage& before, const QImage& now);
    Grab compose(const std::vector<std::uint32_t>& frontToBack, const CGRect& imageBounds,
                 std::uint32_t imageOptions) const;
    const Window* windowOf(std::uint32_t number) const;

    QString trouble_;
    QString limitation_;
    QImage screen_;
    QImage desktop_;
    std::vector<Window> windows_;
    CGPoint mouseLocation_;
    std::deque<GrabOutcome> outcomes_;
    std::function<void()> work_ = [] {};
    int grabsOfMainDisplay_ = 0;
    int windowEnumerations_ = 0;
    std::vector<std::vector<std::uint32_t>> grabsOfWindows_;
    std::uint64_t lastSerial_ = 0;
    std::uint64_t windowsSerial_ = 1;
    ChangeHistory screenChanges_; ///< its latest number is the screen's serial
    QImage lastComposite_;
    ChangeHistory compositeChanges_; ///< its latest number is the composite's serial
};

} // namespace lumavex
