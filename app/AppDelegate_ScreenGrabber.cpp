// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"

#include "app/ChosenWindow.h"
#include "app/Window_Main.h"
#include "capture/FollowCursor.h"

#include <utility>

namespace lumavex {

void AppDelegate::TimerRefreshVideoRoutine(const TimerFiring& firing)
{
    makeFrame(FrameStep::Grab, firing.deadline);
}

void AppDelegate::grabScreen()
{
    if (!compose.showsScreen())
        return;

    updateWindowList();
    const bool exclusive = capture.i_Type_Screen_Capture == WindowExclusive;
    if (exclusive && !capture.sWindowExclusive)
        return;
    const std::optional<QString> chosen = exclusive ? capture.sWindowExclusive : std::nullopt;
    if (capture.windowsMinusLumavexSerial != capture.windowsSerial || capture.windowsMinusLumavexChosen != chosen) {
        capture.arrayWindowsMinusLumavex = windowsToGrab(capture.arrayController, chosen ? &*chosen : nullptr);
        capture.numberOfWindowExclusive.reset();
        if (const WindowEntry* entry = chosen ? windowOfIdentifier(capture.arrayController, *chosen) : nullptr)
            capture.numberOfWindowExclusive = entry->value(kWindowIDKey).toUInt();
        capture.windowsMinusLumavexSerial = capture.windowsSerial;
        capture.windowsMinusLumavexChosen = chosen;
    }
    if (exclusive)
        chosenWindow_->grab();
    else
        createMultiWindowShot(capture.arrayWindowsMinusLumavex);
}

bool AppDelegate::createMultiWindowShot(const QList<WindowEntry>& windows)
{
    return setOutputImage(capture.isComposite() ? platform_.screen->grabWindows(
                              newWindowListFromSelection(windows), capture.imageBounds, capture.imageOptions)
                                                : platform_.screen->grabMainDisplay());
}

bool AppDelegate::setOutputImage(const Grab& grab)
{
    if (grab.outcome == GrabOutcome::GiveUp) {
        const QString trouble = platform_.screen->trouble();
        if (recording.m_RecordStatus != Idle)
            stopBecause(trouble);
        else if (trouble != screenTrouble_)
            window_.showMessage(MessageTopic::Screen, {trouble});
        screenTrouble_ = trouble;
        return false;
    }
    if (!std::exchange(screenTrouble_, {}).isEmpty())
        window_.withdrawMessage(MessageTopic::Screen);
    if (grab.outcome != GrabOutcome::Success || grab.picture.isNull())
        return false;
    capture.imgScreenCapture = grab.picture;
    capture.serialScreen = grab.serial;
    capture.screenChanges = grab.changes;
    // A missing window is replaced by the other windows, which show the whole display.
    const bool ofWindow = capture.i_Type_Screen_Capture == WindowExclusive && capture.numberOfWindowExclusive;
    const QSize size = ofWindow ? QSize(0, 0) : grab.picture.size();
    capture.size_Grab = {static_cast<double>(size.width()), static_cast<double>(size.height())};
    return true;
}

ScreenPicture AppDelegate::prepareScreenPicture()
{
    ScreenPicture picture;
    capture.imgScreenCaptureToDraw = capture.imgScreenCapture;
    picture.imgScreenCapture = {capture.imgScreenCaptureToDraw, capture.serialScreen};
    picture.changes = capture.screenChanges;
    // The display's resolution can change at any time; the movie keeps its size and shows the new resolution fitted
    // into it. A single window is stretched to the screen's size instead.
    const bool ofDisplay = capture.size_Grab.width > 0;
    picture.size_Screen = ofDisplay ? capture.size_Grab : capture.size_Screen;
    picture.keepsShape = picture.size_Screen != capture.size_Screen;
    picture.imgMouseCursor = capture.imgMouseCursor;

    const bool following = capture.i_Type_Screen_Capture == FollowCursor;
    const bool withCursor = capture.b_Screen_Include_Mouse == 1;
    if (following || withCursor) {
        const CGPoint mouse = platform_.screen->mouseLocation();
        if (withCursor)
            picture.cursor = mouse;
        if (following) {
            capture.rect_Screen_Follow_Cursor =
                followCursorRect(mouse, capture.size_Follow_Cursor, picture.size_Screen);
            picture.cut = capture.rect_Screen_Follow_Cursor;
        }
    }
    if (capture.i_Type_Screen_Capture == Region)
        picture.cut = capture.regionOn(picture.size_Screen);
    return picture;
}

} // namespace lumavex
