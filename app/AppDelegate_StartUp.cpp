// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"

#include "app/ChosenWindow.h"
#include "app/ConnectedCamera.h"
#include "app/LevelMeter.h"
#include "app/ScreenSizeWatch.h"
#include "app/Window_Main.h"
#include "app/Window_More_Information.h"

#include <QAction>
#include <QCoreApplication>
#include <QMenu>
#include <QStandardPaths>

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace lumavex {

namespace {

QImage bundleImage(const char* name)
{
    return QImage(QStringLiteral(":/images/%1.png").arg(QLatin1String(name)), "PNG");
}
} // namespace

AppDelegate::AppDelegate(Platform& platform, Window_Main& window, const LaunchOptions& options)
    : platform_(platform), window_(window), options_(options), choices_(*platform.moreSettings),
      chosenWindow_(std::make_unique<ChosenWindow>(*this, *platform.screen, window, choices_)),
      screenSize_(std::make_unique<ScreenSizeWatch>(*this, *platform.screen, window)),
      connectedCamera_(std::make_unique<ConnectedCamera>(*this, platform, window, options))
{
}

AppDelegate::~AppDelegate()
{
    window_.levelMeter->setSource(nullptr); // the source calls this object's recorder
    pictureWriter_.wait();                  // a picture being written reports to this object
}

void AppDelegate::awakeFromNib()
{
    capture.listOptions = ListOnScreenOnly;
    capture.imageOptions = ImageDefault;
    capture.imageBounds = infiniteRect;
    QMetaObject::invokeMethod(this, &AppDelegate::refreshWindowList, Qt::QueuedConnection);
    connect(&window_, &Window_Main::windowShouldClose, this, &AppDelegate::Terminate_App);
}

bool AppDelegate::applicationDidFinishLaunching()
{
    capture.i_Type_Screen_Capture = EntireScreen;
    capture.b_Refresh_Menu_Windows = true;
    capture.b_Lumavex_Invisible_To_Capture = options_.hideOwnWindows;
    for (QAction* item : {window_.btnPause, window_.btnStop, window_.menuPause, window_.menuStop,
                          window_.toolbarEntireScreen, window_.menuEntireScreen})
        item->setEnabled(false);
    GetScreenSize();
    window_.hide();

    static_cast<WorkingFolders&>(application) = workingFoldersIn(documentsFolder());
    if (!createWorkingFolders())
        return false;
    emptyWorkingFolders();

    readSettings();
    FillArrayFrameResolution();
    FillSubMenuVideoOutputFrame();
    FillSubMenuFollowCursorFrame();
    FillSubMenuRegionFrame();
    application.sffmpegPath = QStandardPaths::findExecutable(QStringLiteral("ffmpeg"));

    applyColourOptions();
    connectedCamera_->start();
    recording.i_fps_of_Recording = nominalRate();
    createRefreshTimers();
    recording.i_debug_number_of_view_refresh = 0;
    compose.timerdebug1Second = platform_.runLoop->scheduleRepeating(
        {1, 1}, RunLoopMode::Common, [this](const TimerFiring&) { TimerDebug1SecondRoutine(); });

    setUpSourceControls();
    setUpOutputSize();
    if (compose.i_Open_Preview_Window_On_Startup == 1)
        compose.timer_Open_Preview_Window = platform_.runLoop->scheduleOnce(
            {1, 5}, [this](const TimerFiring&) { Timer_Open_Preview_Window_Routine(); });

    application.numCPUs = platform_.processorLoad->processorCount();
    application.updateTimer = platform_.runLoop->scheduleRepeating({3, 1}, RunLoopMode::Default,
                                                                   [this](const TimerFiring&) { updateInfo(); });
    applyCaptureOptions();
    applyOverlayOption();
    if (!options_.isUnattended())
        showMainWindow();
    // Only after the window is shown: the first picture loads the plugins for all formats.
    capture.imgMouseCursor = bundleImage("mousecursor").convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (!compose.bOverlay) {
        compose.imgOverlay = bundleImage("SelectImage");
        compose.serialOverlay = 1;
    }
    return true;
}

void AppDelegate::showMainWindow()
{
    window_.setWindowTitle(QStringLiteral("Lumavex"));
    window_.show();
    window_.raise();
    window_.activateWindow();
    if (!launchProblem.isEmpty())
        window_.showMessage(launchProblem);
    if (application.sffmpegPath.isEmpty())
        window_.showMessage(MessageTopic::Encoder,
                            {tr("The program ffmpeg is not installed. Recordings with sound need it.")});
    if (const QString limitation = platform_.screen->limitation(); !limitation.isEmpty())
        window_.showMessage(MessageTopic::Session, {limitation});
    // Work that the window does not need before it is shown and drawn.
    platform_.runLoop->scheduleOnce({1, 10}, [this](const TimerFiring&) { connectedCamera_->beginListing(); });
    platform_.runLoop->scheduleOnce({1, 2}, [this](const TimerFiring&) {
        connectedCamera_->list();
        if (const QString trouble = platform_.cameras->trouble(); !trouble.isEmpty())
            window_.showMessage(MessageTopic::Camera, {trouble});
        finishRescue();
    });
}

bool AppDelegate::createWorkingFolders()
{
    const struct {
        const QString& path;
        const char* message;
    } folders[] = {
        {application.s_Output_Folder, "Error #0008. Application will exit."},
        {application.s_Video_Folder, "Error #0009. Application will exit."},
        {application.s_Picture_Folder, "Error #000A. Application will exit."},
    };
    for (const auto& folder : folders) {
        QString error;
        const FolderCreation creation = createFolder(folder.path, error);
        if (creation == FolderCreation::Failed) {
            qWarning("%s", qUtf8Printable(error));
            platform_.dialogs->runAlert(
                {QStringLiteral("Error"), QString::fromLatin1(folder.message), {QStringLiteral("Close")}});
            return false;
        }
        if (creation == FolderCreation::Created && &folder == folders)
            writeFirstRunDefaults();
    }
    return true;
}

void AppDelegate::emptyWorkingFolders()
{
    // First moves aside a recording that an earlier run could not finish because it was killed.
    rescued_ = rescueLeftRecordings(application.s_Video_Folder, application.s_Recovered_Folder);
    RemoveAllContentInFolder(application.s_Output_Folder);
    if (allPutAside(rescued_))
        RemoveAllContentInFolder(application.s_Video_Folder);
    RemoveAllContentInFolder(application.s_Picture_Folder);
}

std::int32_t AppDelegate::nominalRate() const
{
    const auto screenRate = static_cast<double>(std::max<std::int64_t>(1, capture.m_i_Screen_Capture_FPS));
    const auto cameraRate = camera.b_Camera_Connected ? static_cast<double>(camera.m_i_Camera_Capture_FPS) : 1.0;
    constexpr double fastest = 1000; // a damaged settings file must not load the machine with timers
    return static_cast<std::int32_t>(std::min(fastest, cameraRate <= screenRate ? screenRate : cameraRate));
}

void AppDelegate::createRefreshTimers()
{
    RunLoop& runLoop = *platform_.runLoop;
    const TimerInterval interval{1, recording.i_fps_of_Recording};
    runLoop.invalidate(application.timerVideoRefresh);
    application.timerVideoRefresh = runLoop.scheduleRepeating(
        interval, RunLoopMode::Common, [this](const TimerFiring& firing) { TimerRefreshVideoRoutine(firing); });
    runLoop.invalidate(compose.timerViewRefresh);
    compose.timerViewRefresh = runLoop.scheduleRepeating(
        interval, RunLoopMode::Common, [this](const TimerFiring& firing) { TimerRefreshViewRoutine(firing); });
    // One base for both, so that each frame uses the grab made for it: with two bases, rounding separates the deadlines
    // by a nanosecond. At equal deadlines the grab runs first because it was started first.
    const Nanoseconds origin = runLoop.now();
    for (const TimerId timer : {application.timerVideoRefresh, compose.timerViewRefresh})
        runLoop.restart(timer, origin);
}

void AppDelegate::tell(MessageTopic topic, const Message& message)
{
    window_.showMessage(topic, message);
    qWarning("%s", qUtf8Printable(message.text)); // the window of an unattended recording is not visible
}

void AppDelegate::Terminate_App()
{
    std::quick_exit(0); // runs the handlers that main has registered, and skips the destructors of running objects
}

} // namespace lumavex
