// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"

#include "app/ChosenWindow.h"
#include "app/FocusKeeper.h"
#include "app/ScreenSizeWatch.h"
#include "app/Window_Main.h"
#include "app/awaitCameras.h"
#include "capture/Window_FollowCursor_How_It_Works.h"
#include "capture/Window_Region_How_It_Works.h"
#include "capture/Window_Transparent_Region.h"
#include "capture/Window_WindowExclusive_How_It_Works.h"

#include <QAction>
#include <QWindow>

#include <utility>

namespace lumavex {

namespace {

/// The window manager keeps the window in front of the main window and its preview, which may float above all others.
void keepInFront(QWidget& window, QWidget& mainWindow)
{
    window.winId(); // makes the native window
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

void AppDelegate::startCameraOfSettings()
{
    // Without a camera that is to run, nobody has to wait for those there are (see showMainWindow).
    if (camera.s_Camera_Name == doNotConnectToCamera)
        return;
    if (options_.isUnattended()) {
        if (!compose.showsCamera())
            return; // nobody is there to bring it into view later
        camera.arrayCameras = awaitCameras(*platform_.cameras, *platform_.runLoop, [this](const QStringList& names) {
            return names.contains(camera.s_Camera_Name);
        });
    } else {
        camera.arrayCameras = cameraDelegate.enumCameras();
    }
    camera.b_Camera_Connected = cameraDelegate.startCamera(camera.s_Camera_Name);
    if (!camera.b_Camera_Connected)
        tellCameraFailure();
}

void AppDelegate::tellCameraFailure()
{
    qWarning("%s", qUtf8Printable(cameraDelegate.trouble()));
    window_.showMessage(MessageTopic::Camera, {cameraDelegate.trouble()});
    platform_.dialogs->runAlert({QStringLiteral("Error"),
                                 QStringLiteral("Could not start Camera. Change Camera Resolution and try again."),
                                 {QStringLiteral("Close")}});
    cameraDelegate.stopCamera();
    dropCamera();
}

void AppDelegate::dropCamera()
{
    camera.m_i_Camera_Capture_FPS = 1;
    camera.s_Camera_Name = doNotConnectToCamera;
    if (options_.isUnattended())
        return; // a run that nobody watches does not change what the user chose
    storeInteger("i_Camera_Capture_FPS", 1);
    storeText("s_Camera_Name", camera.s_Camera_Name);
}

void AppDelegate::connectCamera()
{
    connect(&cameraDelegate, &CameraDelegate::pictureTaken, this, &AppDelegate::adoptCameraSize);
    connect(&cameraDelegate, &CameraDelegate::startFailed, this, [this] {
        camera.b_Camera_Connected = false;
        tellCameraFailure();
        adaptToCamera();
    });
    connect(&cameraDelegate, &CameraDelegate::cameraPresenceChanged, this, [this](bool present) {
        camera.b_Camera_Gone = !present;
        if (present)
            recording.incidents.end(RecordingIncidents::Kind::CameraGone, recording.movieSeconds());
        else if (compose.showsCamera())
            recording.incidents.begin(RecordingIncidents::Kind::CameraGone, recording.movieSeconds());
        const QString text = present ? tr("The camera %1 is back.")
                                     : tr("The camera %1 is gone. Its last picture stays until it comes back.");
        tell(MessageTopic::Camera,
             {text.arg(camera.s_Camera_Name), {}, present ? Message::Kind::Information : Message::Kind::Warning});
        if (present && recording.m_RecordStatus == Idle)
            window_.withdrawMessage(MessageTopic::Camera);
    });
}

void AppDelegate::tell(MessageTopic topic, const Message& message)
{
    window_.showMessage(topic, message);
    qWarning("%s", qUtf8Printable(message.text)); // the window of an unattended recording is not seen
}

void AppDelegate::adoptCameraSize()
{
    if (!camera.b_Change_to_Camera_Resolution)
        return;
    setVideoOutputSize(camera.size_Camera);
    // The first time the preview is only about to open, in the right shape.
    if (camera.i_Camera_Resolution_Change_Count > 0 && recording.m_RecordStatus == Idle)
        Refresh_Preview_Window();
    camera.b_Change_to_Camera_Resolution = false;
    ++camera.i_Camera_Resolution_Change_Count;
}

void AppDelegate::setUpSourceControls()
{
    EnableCameraRelatedControls(camera.b_Camera_Connected);
    const bool cameraOnly = compose.i_Video_Source_Primary == 2 && compose.i_Show_Secondary == 0;
    if (!camera.b_Camera_Connected) {
        compose.i_Video_Source_Primary = 1;
        compose.i_Show_Secondary = 0;
    } else if (cameraOnly && compose.index_size_Video_Output == 0) {
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
    camera.b_Change_to_Camera_Resolution = false; // what an earlier choice waited for
    if (compose.index_size_Video_Output != 0 || recording.m_RecordStatus != Idle)
        return;
    if (primary == CameraPrimary && camera.size_Camera.width <= 0) {
        camera.b_Change_to_Camera_Resolution = true; // its size is known with its first frame
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
    window_.toolbarRegion->setEnabled(true); // the region can be placed anew
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
        constexpr qsizetype first = 2; // the two in front of it are the program's own, as a rule
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

void AppDelegate::applyCaptureOptions()
{
    if (options_.needsCamera() && !camera.b_Camera_Connected) {
        launchProblem = options_.camera.isEmpty() ? tr("There is no camera to record.") : cameraDelegate.trouble();
        return;
    }
    switch (options_.captureType.value_or(EntireScreen)) {
    case FollowCursor:
        showCaptureType(window_.toolbarFollowCursor, window_.menuFollowCursor);
        capture.size_Follow_Cursor = options_.follow.value_or(capture.catalogueSize(capture.index_size_Follow_Cursor));
        capture.i_Type_Screen_Capture = FollowCursor;
        break;
    case Region:
        if (!options_.region) {
            QMetaObject::invokeMethod(this, &AppDelegate::OnToolbarRegion, Qt::QueuedConnection);
            break;
        }
        capture.rect_Screen_Region = {double(options_.region->x),
                                      capture.size_Screen.height - options_.region->y - options_.region->height,
                                      double(options_.region->width), double(options_.region->height)};
        capture.height_Marked = capture.size_Screen.height;
        showCaptureType(window_.toolbarRegion, window_.menuRegion);
        window_.toolbarRegion->setEnabled(true);
        capture.i_Type_Screen_Capture = Region;
        break;
    case WindowExclusive:
        if (options_.window.isEmpty())
            QMetaObject::invokeMethod(this, &AppDelegate::OnToolbarWindowExclusive, Qt::QueuedConnection);
        else if (const QString problem = chooseWindowByText(options_.window); !problem.isEmpty())
            launchProblem = problem;
        break;
    default:
        break;
    }
}

QString AppDelegate::chooseWindowByText(const QString& text)
{
    updateWindowList();
    for (const WindowEntry& entry : std::as_const(capture.arrayController)) {
        const QString identifier = Return_Window_Identifier_String(entry);
        if (belongsToLumavex(entry) || !identifier.contains(text, Qt::CaseInsensitive))
            continue;
        capture.sWindowExclusive = identifier;
        showCaptureType(window_.toolbarWindowExclusive, window_.menuWindowExclusive);
        capture.i_Type_Screen_Capture = WindowExclusive;
        chosenWindow_->announce();
        return {};
    }
    return tr("There is no window whose name contains \"%1\" (see --list-windows).").arg(text);
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
