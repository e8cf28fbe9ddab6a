// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ScreenSizeWatch.h"

#include "app/AppDelegate.h"
#include "app/WindowPlaces.h"
#include "app/Window_Main.h"
#include "app/Window_More_Information.h"

#include <QGuiApplication>
#include <QScreen>

#include <chrono>

using namespace std::chrono_literals;

namespace lumavex {

QString regionProblem(const CaptureState& capture, const ComposeState& compose)
{
    const CGSize display = capture.displaySize();
    const CGRect region = capture.regionOn(display);
    if (capture.i_Type_Screen_Capture != Region || !compose.showsScreen() || region.width <= 0
        || (region.x < display.width && region.x + region.width > 0 && region.y < display.height
            && region.y + region.height > 0))
        return {};
    return ScreenSizeWatch::tr("The region lies outside the screen, which is %1x%2 pixels large.")
        .arg(display.width)
        .arg(display.height);
}

ScreenSizeWatch::ScreenSizeWatch(AppDelegate& app, ScreenGrabber& screen, Window_Main& window)
    : app_(app), screen_(screen), window_(window)
{
    // Window manager and panels adapt to the new size first and may move windows themselves.
    settling_.setSingleShot(true);
    settling_.setInterval(400ms);
    connect(&settling_, &QTimer::timeout, this, &ScreenSizeWatch::bringWindowsBack);
    connect(qGuiApp, &QGuiApplication::screenAdded, this, &ScreenSizeWatch::watch);
    for (const auto changed : {&QGuiApplication::screenRemoved, &QGuiApplication::primaryScreenChanged})
        connect(qGuiApp, changed, &settling_, qOverload<>(&QTimer::start));
    const auto screens = QGuiApplication::screens();
    for (QScreen* present : screens)
        watch(present);
    settling_.stop();
}

void ScreenSizeWatch::watch(QScreen* screen)
{
    connect(screen, &QScreen::geometryChanged, this, &ScreenSizeWatch::look);
    for (const auto changed : {&QScreen::geometryChanged, &QScreen::availableGeometryChanged})
        connect(screen, changed, &settling_, qOverload<>(&QTimer::start));
    settling_.start();
}

void ScreenSizeWatch::look()
{
    const CGSize now = screen_.sizeOfMainDisplay();
    if (now.width <= 0)
        return; // the screen is lost, which is reported elsewhere
    app_.capture.size_Display = now;
    tellSize();
    tellRegion();
}

void ScreenSizeWatch::tellSize()
{
    const CGSize& size = app_.capture.size_Display;
    if (size == app_.capture.size_Screen) {
        if (told_)
            window_.withdrawMessage(MessageTopic::ScreenSize);
        told_.reset();
        return;
    }
    const Told now{size, app_.recording.m_RecordStatus == Idle && !app_.recording.isEnding()};
    const bool news = !told_ || told_->size != size;
    if (told_ == now || (!news && !window_.showsMessage(MessageTopic::ScreenSize)))
        return; // reported, or the user has closed the message
    told_ = now;
    Message message{tr("The screen is %1 x %2 now.").arg(size.width).arg(size.height)};
    message.kind = Message::Kind::Information;
    if (now.offered)
        message.actions = {{tr("Use Its Size"), [this] { useItsSize(); }}};
    if (news)
        app_.tell(MessageTopic::ScreenSize, message);
    else
        window_.showMessage(MessageTopic::ScreenSize, message);
}

void ScreenSizeWatch::tellRegion()
{
    if (QGuiApplication::modalWindow())
        return; // the region selector may still move the region inside
    const QString problem = regionProblem(app_.capture, app_.compose);
    if (problem == regionTold_)
        return;
    regionTold_ = problem;
    constexpr auto outside = RecordingIncidents::Kind::RegionOutside;
    if (problem.isEmpty()) {
        app_.recording.incidents.end(outside, app_.recording.movieSeconds());
        window_.withdrawMessage(MessageTopic::Region);
    } else {
        app_.recording.incidents.begin(outside, app_.recording.movieSeconds());
        app_.tell(MessageTopic::Region, regionMessage(problem));
    }
}

Message ScreenSizeWatch::regionMessage(const QString& problem)
{
    return {tr("%1 Its picture is black until it is marked again.").arg(problem),
            {{tr("Mark It Again"), [this] { app_.OnToolbarRegion(); }}}};
}

QString ScreenSizeWatch::refusal()
{
    look();
    const QString problem = regionProblem(app_.capture, app_.compose);
    if (!problem.isEmpty() && !window_.showsMessage(MessageTopic::Region)) // the user has closed it
        window_.showMessage(MessageTopic::Region, regionMessage(problem));
    return problem;
}

void ScreenSizeWatch::useItsSize()
{
    told_.reset();
    if (app_.recording.m_RecordStatus != Idle || app_.recording.isEnding()) {
        look(); // the button was pressed just after Record
        return;
    }
    app_.GetScreenSize();
    app_.FillSubMenuVideoOutputFrame();
    app_.FillSubMenuFollowCursorFrame();
    app_.FillSubMenuRegionFrame();
    const bool ofCamera = app_.compose.cameraIsPrimary() && app_.camera.b_Camera_Connected;
    if (app_.compose.followsSource() && !ofCamera)
        app_.OnMenuVideoOutputScreenResolution();
    look();
    settling_.start(); // the preview reopens in another shape
}

void ScreenSizeWatch::bringWindowsBack()
{
    // The preview moves with the main window, so that window is moved first and the others after it has arrived. Only
    // once: a window manager may place windows as it likes.
    mainMoved_ = !mainMoved_ && bringIntoReach(window_);
    if (mainMoved_) {
        settling_.start();
        return;
    }
    if (app_.application.p_Window_Can_Not_Record)
        bringIntoReach(*app_.application.p_Window_Can_Not_Record);
    if (app_.compose.windowPreview)
        bringIntoReach(*app_.compose.windowPreview, &window_);
}

} // namespace lumavex
