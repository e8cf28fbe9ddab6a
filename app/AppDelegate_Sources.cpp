// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"

#include "app/ChosenWindow.h"
#include "app/FocusKeeper.h"
#include "app/ScreenSizeWatch.h"
#include "app/Window_Main.h"
#include "capture/Window_FollowCursor_How_It_Works.h"
#include "capture/Window_Region_How_It_Works.h"
#include "capture/Window_Transparent_Region.h"
#include "capture/Window_WindowExclusive_How_It_Works.h"

#include <QAction>
#include <QWindow>

#include <utility>

namespace lumavex {

namespace {

/// Asks the window manager to keep the window above the main window and its preview, which may float above all others.
void keepInFront(QWidget& window, QWidget& mainWindow)
{
    window.winId(); // creates the native window
    window.windowHandle()->setTransientParent(mainWindow.windowHandle());
}

} // namespace

void AppDelegate::EnableCameraRelatedControls(bool enabled)
{
    for (QAction* item : {window_.menuCameraAlone, window_.menuBothScreenPrimary, window_.menuBothCameraPrimary})
        item->setEnabled(enabled);
}

void AppDelegate::EnableScreenCaptureModes(bool enabled)
{
    const FocusKeeper focus(window_);
    for (QAction* item : {window_.toolbarEntireScreen, window_.toolbarFollowCursor, window_.toolbarRegion,
                          window_.toolbarWindowExclusive, window_.menuEntireScreen, window_.menuFollowCursor,
                          window_.menuRegion, window_.menuWindowExclusive})
        item->setEnabled(enabled);
}

void AppDelegate::setUpSourceControls()
{
    EnableCameraRelatedControls(camera.b_Camera_Connected);
    const bool cameraOnly = !compose.showsScreen();
    if (!camera.b_Camera_Connected) {
        compose.i_Video_Source_Primary = ScreenPrimary;
        compose.i_Show_Secondary = 0;
    } else if (cameraOnly && compose.followsSource()) {
        camera.b_Change_to_Camera_Resolution = true;
    }
    EnableScreenCaptureModes(!camera.b_Camera_Connected || !cameraOnly);
}

void AppDelegate::OnToolbarScreenOnly()
{
    chooseSource(ScreenPrimary, Secondary::Hidden);
}

void AppDelegate::OnToolbarCameraOnly()
{
    if (hasCamera(QStringLiteral("Connect a Camera.")))
        chooseSource(CameraPrimary, Secondary::Hidden);
}

void AppDelegate::OnToolbarScreenAndCamera()
{
    if (hasCamera(QStringLiteral("Connect a Camera.")))
        chooseSource(ScreenPrimary, Secondary::Shown);
}

void AppDelegate::OnMenuBothScreenPrimary()
{
    if (hasCamera(QStringLiteral("Connect a camera.")))
        chooseSource(ScreenPrimary, Secondary::Shown);
}

void AppDelegate::OnMenuBothCameraPrimary()
{
    if (hasCamera(QStringLiteral("Connect a camera.")))
        chooseSource(CameraPrimary, Secondary::Shown);
}

bool AppDelegate::hasCamera(const QString& messageText)
{
    if (camera.b_Camera_Connected)
        return true;
    platform_.dialogs->runAlert({messageText,
                                 QStringLiteral("No camera connected. Go to settings and connect a camera."),
                                 {QStringLiteral("Close")}});
    return false;
}

void AppDelegate::chooseSource(VideoSource primary, Secondary secondary)
{
    compose.i_Video_Source_Primary = primary;
    compose.i_Show_Secondary = secondary == Secondary::Shown ? 1 : 0;
    EnableScreenCaptureModes(primary == ScreenPrimary || secondary == Secondary::Shown);
    storeInteger("i_Show_Secondary", compose.i_Show_Secondary);
    storeInteger("i_Video_Source_Primary", compose.i_Video_Source_Primary);
    camera.b_Change_to_Camera_Resolution = false; // set by an earlier choice
    if (!compose.followsSource() || recording.m_RecordStatus != Idle)
        return;
    if (primary == CameraPrimary && camera.size_Camera.width <= 0) {
        camera.b_Change_to_Camera_Resolution = true; // its size is known after its first frame
        return;
    }
    setVideoOutputSize(primary == CameraPrimary ? camera.size_Camera : capture.size_Screen);
    Refresh_Preview_Window();
}

bool AppDelegate::validateToolbarItem(const QAction& item) const
{
    return item.isEnabled();
}

void AppDelegate::OnToolbarEntireScreen()
{
    capture.i_Type_Screen_Capture = EntireScreen;
    showCaptureType(window_.toolbarEntireScreen, window_.menuEntireScreen);
}

void AppDelegate::OnToolbarFollowCursor()
{
    if (application.b_Show_FollowCursor_How_To == 1)
        runGuide<Window_FollowCursor_How_It_Works>("b_Show_FollowCursor_How_To",
                                                   application.b_Show_FollowCursor_How_To);
    showCaptureType(window_.toolbarFollowCursor, window_.menuFollowCursor);
    capture.size_Follow_Cursor = capture.catalogueSize(capture.index_size_Follow_Cursor);
    capture.i_Type_Screen_Capture = FollowCursor;
}

void AppDelegate::OnToolbarRegion()
{
    if (application.b_Show_Select_Region_How_To == 1)
        runGuide<Window_Region_How_It_Works>("b_Show_Select_Region_How_To", application.b_Show_Select_Region_How_To);
    capture.i_Type_Screen_Capture = Region;
    showCaptureType(window_.toolbarRegion, window_.menuRegion);
    capture.size_Region = capture.catalogueSize(capture.index_size_Region);
    screenSize_->look();
    Window_Transparent_Region windowTransparentRegion(capture, *platform_.overlay);
    keepInFront(windowTransparentRegion, window_);
    windowTransparentRegion.runModal();
    screenSize_->look();
    window_.toolbarRegion->setEnabled(true); // the region can be chosen anew
}

void AppDelegate::OnToolbarWindowExclusive()
{
    if (application.b_Show_WindowExclusive_How_To == 1)
        runGuide<Window_WindowExclusive_How_It_Works>(
            "b_Show_WindowExclusive_How_To", application.b_Show_WindowExclusive_How_To, chosenWindow_->isHeld(),
            [this](bool hold) { chosenWindow_->setHeld(hold); });
    capture.i_Type_Screen_Capture = WindowExclusive;
    showCaptureType(window_.toolbarWindowExclusive, window_.menuWindowExclusive);
    if (!capture.sWindowExclusive) {
        updateWindowList();
        constexpr qsizetype first = 2; // the first two usually belong to this program
        if (capture.arrayController.size() > first)
            capture.sWindowExclusive = Return_Window_Identifier_String(capture.arrayController.at(first));
    }
    chosenWindow_->announce();
}

template <class Guide, class... Extra>
void AppDelegate::runGuide(const char* setting, std::int64_t& value, Extra&&... extra)
{
    Guide guide(
        [this, setting, &value] {
            value = 0;
            storeInteger(setting, 0);
        },
        std::forward<Extra>(extra)...);
    keepInFront(guide, window_);
    guide.runModal();
}

void AppDelegate::showCaptureType(QAction* toolbarItem, QAction* menuItem)
{
    for (const MessageTopic ofEarlierType : {MessageTopic::Window, MessageTopic::Region})
        window_.withdrawMessage(ofEarlierType);
    EnableScreenCaptureModes(true);
    const FocusKeeper focus(window_);
    toolbarItem->setEnabled(false);
    menuItem->setEnabled(false);
}

} // namespace lumavex
