// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/fakes/FakeScreenGrabber.h"

#include <QPainter>

#include <algorithm>
#include <utility>

namespace lumavex {

namespace {

QRect boundsOf(const WindowDescription& description)
{
    return QRectF(description.x, description.y, description.width, description.height).toRect();
}

/// The bounding rectangle of the pixels that differ; all of `now` when the sizes differ.
QRect difference(const QImage& before, const QImage& now)
{
    if (before.size() != now.size())
        return now.rect();
    QRect found;
    for (int y = 0; y < now.height(); ++y)
        for (int x = 0; x < now.width(); ++x)
            if (before.pixel(x, y) != now.pixel(x, y))
                found |= QRect(x, y, 1, 1);
    return found;
}

} // namespace

void FakeScreenGrabber::setScreen(const QImage& picture)
{
    const QImage before = std::exchange(screen_, picture.convertToFormat(QImage::Format_RGB32));
    if (before.size() != screen_.size())
        ++windowsSerial_; // the list includes the desktop
    noteChange(screenChanges_, before, screen_);
}

void FakeScreenGrabber::noteChange(ChangeHistory& history, const QImage& before, const QImage& now)
{
    if (before.size() != now.size())
        history.clear();
    const QRect changed = difference(before, now);
    if (history.latest() == 0 || !changed.isEmpty())
        history.add(++lastSerial_, ChangedArea(changed));
}

void FakeScreenGrabber::setWindows(std::vector<Window> windows)
{
    windows_ = std::move(windows);
    for (Window& window : windows_) {
        window.description.width = window.picture.width();
        window.description.height = window.picture.height();
    }
    ++windowsSerial_;
}

void FakeScreenGrabber::setDesktop(const QImage& picture)
{
    desktop_ = picture;
}

CGSize FakeScreenGrabber::sizeOfMainDisplay()
{
    return {static_cast<double>(screen_.width()), static_cast<double>(screen_.height())};
}

GrabOutcome FakeScreenGrabber::beginGrab()
{
    work_();
    if (!trouble_.isEmpty())
        return GrabOutcome::GiveUp;
    if (outcomes_.empty())
        return GrabOutcome::Success;
    const GrabOutcome outcome = outcomes_.front();
    outcomes_.pop_front();
    return outcome;
}

Grab FakeScreenGrabber::grabMainDisplay()
{
    ++grabsOfMainDisplay_;
    if (const GrabOutcome outcome = beginGrab(); outcome != GrabOutcome::Success)
        return {outcome, {}, 0};
    if (screen_.isNull())
        return {};
    return {GrabOutcome::Success, screen_, screenChanges_.latest(), screenChanges_};
}

Grab FakeScreenGrabber::grabWindows(const std::vector<std::uint32_t>& frontToBack, const CGRect& imageBounds,
                                    std::uint32_t imageOptions)
{
    grabsOfWindows_.push_back(frontToBack);
    if (const GrabOutcome outcome = beginGrab(); outcome != GrabOutcome::Success)
        return {outcome, {}, 0};
    const Grab composite = compose(frontToBack, imageBounds, imageOptions);
    if (composite.outcome != GrabOutcome::Success)
        return composite;
    noteChange(compositeChanges_, std::exchange(lastComposite_, composite.picture), composite.picture);
    return {GrabOutcome::Success, lastComposite_, compositeChanges_.latest(), compositeChanges_};
}

Grab FakeScreenGrabber::compose(const std::vector<std::uint32_t>& frontToBack, const CGRect& imageBounds,
                                std::uint32_t imageOptions) const
{
    const bool desktop = std::find(frontToBack.begin(), frontToBack.end(), kDesktopNumber) != frontToBack.end();
    std::vector<const Window*> layers;
    QRect canvas;
    for (const std::uint32_t number : frontToBack) {
        const Window* const window = windowOf(number);
        if (!window)
            continue;
        layers.push_back(window);
        canvas |= boundsOf(window->description);
    }
    if (desktop)
        canvas = screen_.rect();
    canvas = (QRectF(canvas) & flippedDown(imageBounds, screen_.height())).toAlignedRect();
    if (canvas.isEmpty())
        return {};
    QImage picture(canvas.size(), QImage::Format_RGB32);
    picture.fill(Qt::black);
    QPainter painter(&picture);
    painter.translate(-canvas.topLeft());
    if (desktop)
        painter.drawImage(0, 0, desktop_);
    for (auto layer = layers.rbegin(); layer != layers.rend(); ++layer)
        painter.drawImage(boundsOf((*layer)->description).topLeft(),
                          imageOptions & ImageOpaque ? (*layer)->picture.convertToFormat(QImage::Format_RGB32)
                                                     : (*layer)->picture);
    painter.end();
    return {GrabOutcome::Success, picture, 0};
}

std::vector<WindowDescription> FakeScreenGrabber::windowDescriptions(std::uint32_t listOptions)
{
    ++windowEnumerations_;
    std::vector<WindowDescription> descriptions;
    for (const Window& window : windows_)
        if (!(listOptions & ListOnScreenOnly) || screen_.rect().intersects(boundsOf(window.description)))
            descriptions.push_back(window.description);
    WindowDescription desktop;
    desktop.ownerName = QStringLiteral("Desktop");
    desktop.width = screen_.width();
    desktop.height = screen_.height();
    desktop.number = kDesktopNumber;
    desktop.layer = -20;
    descriptions.push_back(desktop);
    return descriptions;
}

std::vector<WindowLook> FakeScreenGrabber::looksOf(const std::vector<std::uint32_t>& windows, int)
{
    std::vector<WindowLook> looks;
    for (const std::uint32_t number : windows) {
        const Window* const window = windowOf(number);
        looks.push_back(window ? window->look : WindowLook{});
    }
    return looks;
}

bool FakeScreenGrabber::showsContents(std::uint32_t number)
{
    const Window* const window = windowOf(number);
    return window ? window->showsContents : number == kDesktopNumber;
}

const FakeScreenGrabber::Window* FakeScreenGrabber::windowOf(std::uint32_t number) const
{
    const auto window = std::find_if(windows_.begin(), windows_.end(), [number](const Window& candidate) {
        return candidate.description.number == number;
    });
    return window == windows_.end() ? nullptr : &*window;
}

} // namespace lumavex
