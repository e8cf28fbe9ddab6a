// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/ApplicationState.h"
#include "app/Message.h"
#include "app/MoreSettings.h"
#include "app/WorkQueue.h"
#include "app/options/LaunchOptions.h"
#include "camera/CameraState.h"
#include "capture/CaptureState.h"
#include "compose/ComposeState.h"
#include "compose/Compositor.h"
#include "platform/Platform.h"
#include "recording/RecordingState.h"
#include "recording/Rescue.h"
#include "settings_dialog/DialogSettings.h"

#include <QObject>

#include <chrono>
#include <memory>
#include <optional>

namespace lumavex {

class ChosenWindow;
class ConnectedCamera;
class Window_Main;

/// Owns the program's state and carries out its commands. One object, as long as the process; main thread only.
///
/// Each section below is defined in the source file it names. A command has one action; toolbar item, menu item,
/// shortcut and command line all call it.
class AppDelegate final : public QObject {
    Q_OBJECT
public:
    /// Platform and window must outlive the delegate.
    AppDelegate(Platform& platform, Window_Main& window, const LaunchOptions& options);
    ~AppDelegate() override;

    ApplicationState application;
    CaptureState capture;
    CameraState camera;
    ComposeState compose;
    RecordingState recording;

    // --- Start-up, timers and shutdown: AppDelegate_StartUp.cpp ---
    void awakeFromNib();
    /// The start-up sequence. False when the program cannot go on; the user has been told why.
    bool applicationDidFinishLaunching();
    /// Ends the process at once. Nothing is saved; what a recording left is found again at the next start.
    [[noreturn]] void Terminate_App();
    void OnMenuQuit() { Terminate_App(); }
    /// What of the command line could not be done, in the user's words; empty when all is well.
    QString launchProblem;
    /// In the main window and on standard error.
    void tell(MessageTopic topic, const Message& message);
    /// The larger of the screen's and the running camera's rate, at least 1.
    std::int32_t nominalRate() const;
    void createRefreshTimers();

    // --- Settings store: AppDelegate_Settings.cpp ---
    void writeFirstRunDefaults();
    void readSettings();
    void storeInteger(const char* property, std::int64_t value);
    void storeText(const char* property, const QString& text);
    void setWindowLevel();

    // --- Settings dialog: AppDelegate_SettingsDialog.cpp ---
    void OnToolbarSettings();
    void OnMenuPreferences() { OnToolbarSettings(); }
    DialogSettings dialogSettings() const;
    /// Where the small pictures would stand with these settings: those in the frame now and the one being edited.
    std::vector<FrameOutline> outlinesOf(const DialogSettings& settings, SettingsSubject subject) const;
    /// Takes the dialog's values over and stores those that outlive the program.
    void storeSettings(const DialogSettings& settings);
    /// Makes what was stored take effect: window level, camera, source, rate.
    void applySettings();

    // --- What will be recorded, at a glance: AppDelegate_Summary.cpp ---
    void showSummary();

    // --- Frame sizes and size menus: AppDelegate_FrameSizes.cpp ---
    void GetScreenSize();
    void FillArrayFrameResolution(); ///< an index stored outside it counts as its default; what is stored stays
    void FillSubMenuVideoOutputFrame();
    void FillSubMenuFollowCursorFrame();
    void FillSubMenuRegionFrame();
    void MenuVideoOutputFrameClick(QAction* item);
    void MenuFollowCursorFrameClick(QAction* item);
    void MenuRegionFrameClick(QAction* item);
    void OnMenuVideoOutputScreenResolution();
    void setVideoOutputSize(const CGSize& size);

    // --- Window list: AppDelegate_WindowList.cpp ---
    void updateWindowList();
    void FillMenuWindows();
    void MenuWindowClick(QAction* item);
    void refreshWindowList() { updateWindowList(); }
    void OnMenuRefreshListOfWindows();

    // --- Screen grabber: AppDelegate_ScreenGrabber.cpp ---
    void TimerRefreshVideoRoutine(const TimerFiring& firing);
    bool createMultiWindowShot(const QList<WindowEntry>& windows); ///< as setOutputImage
    bool setOutputImage(const Grab& grab);                         ///< whether imgScreenCapture is of this grab
    /// Takes the picture of the screen that the next frame is composed of.
    void grabScreen();
    /// The screen as it goes into the next frame; updates imgScreenCaptureToDraw and rect_Screen_Follow_Cursor.
    ScreenPicture prepareScreenPicture();

    // --- Sources and capture types: AppDelegate_Sources.cpp ---
    void EnableCameraRelatedControls(bool enabled);
    void EnableScreenCaptureModes(bool enabled);
    void OnToolbarScreenOnly();
    void OnToolbarCameraOnly();
    void OnToolbarScreenAndCamera();
    void OnMenuScreenOnly() { OnToolbarScreenOnly(); }
    void OnMenuCameraOnly() { OnToolbarCameraOnly(); }
    void OnMenuBothScreenPrimary();
    void OnMenuBothCameraPrimary();
    /// Whether the item's command may be given now, which the commands decide and nothing overrides.
    bool validateToolbarItem(const QAction& item) const;
    void OnToolbarEntireScreen();
    void OnToolbarFollowCursor();
    void OnToolbarRegion();
    void OnToolbarWindowExclusive();
    void OnMenuEntireScreen() { OnToolbarEntireScreen(); }
    void OnMenuFollowCursor() { OnToolbarFollowCursor(); }
    void OnMenuRegion() { OnToolbarRegion(); }
    void OnMenuWindowExclusive() { OnToolbarWindowExclusive(); }

    // --- Pages: AppDelegate_Pages.cpp ---
    void OnToolbarHelp();
    void OnMenuAppHomePage();
    void OnMenuCompanyHomePage();
    void OnMenuPrivacyPolicy();
    void OnMenuSupportTicket();

    // --- Preview window and frames: AppDelegate_Preview.cpp ---
    void OnMenuPreviewUp();
    void Refresh_Preview_Window();
    void Timer_Open_Preview_Window_Routine();
    void TimerRefreshViewRoutine(const TimerFiring& firing);
    void TimerDebug1SecondRoutine();
    FrameInputs frameInputs();

    // --- Snapshot: AppDelegate_Snapshot.cpp ---
    void OnToolbarTakePicture();
    void OnMenuTakePicture() { OnToolbarTakePicture(); }
    void Timer_Save_Picture_Routine();

    // --- Recording control: AppDelegate_Recording.cpp ---
    void OnToolbarRecord();
    void OnToolbarPause();
    void OnMenuVideoRecord() { OnToolbarRecord(); }
    void OnMenuVideoPause() { OnToolbarPause(); }
    void Update_Record_Duration();
    /// Appends the frame, or when it is null the previous frame again, and moves the clock on. `changed` is where it
    /// differs from the frame appended before; nothing: unknown. False when it was refused, which ends the recording.
    bool appendFrame(const CVPixelBufferRef& buffer, const std::optional<ChangedArea>& changed);

    // --- Statistics: AppDelegate_Statistics.cpp ---
    /// Makes the file that the options name, if any. Empty, or why it cannot be written, in the user's words.
    QString openStatistics();

    // --- Finishing: AppDelegate_Finishing.cpp ---
    void OnToolbarStop();
    /// Stop as if pressed at `stoppedAt`, which has passed: what was recorded since is left out.
    void stopRecording(Nanoseconds stoppedAt);
    void OnMenuVideoStop() { OnToolbarStop(); }
    /// Ends the recording as soon as the event loop is reached, keeping it; tells the user why.
    void stopBecause(const QString& reason);
    /// From Stop on: gives up joining, or copying to another file system. What was recorded is kept and told.
    void cancelFinishing();
    /// The screen is gone, and with it windows and the event loop: finishes the running recording without them. Without
    /// a user it is saved; else the next start completes it and tells. Afterwards the process must end.
    void finishWithoutScreen();

    // --- Rescue: AppDelegate_Rescue.cpp ---
    /// Tells what an earlier, killed run left and completes it; of that the latter can be given up.
    void finishRescue();
    void cancelRescue() { rescueCancelled_ = true; }

    // --- Processor load: AppDelegate_ProcessorLoad.cpp ---
    void updateInfo();
    void Show_Window_Can_Not_Record();
    void Close_Window_Can_Not_Record();

Q_SIGNALS:
    /// The recording is where it stays, but Stop has not returned; or Record was refused. `path` and `problem` are the
    /// savedPath and the problem of the outcome.
    void recordingFinished(const QString& path, const QString& problem, lumavex::Kept kept);
    /// A snapshot was saved as `path`. Empty: it was not, and the user knows why.
    void pictureFinished(const QString& path);

private:
    enum class Preview { Shown, Hidden };
    void createPreviewWindow(Preview preview);
    bool isPreviewInSight() const;
    /// Whether the next frame is of use: to a recording, a snapshot or somebody who looks.
    bool isFrameWanted() const;
    /// Takes one step of the frame that was due at `deadline`: grab; compose, append or repeat.
    void makeFrame(FrameStep step, Nanoseconds deadline);
    void fillSizeMenu(class QMenu& menu, std::int64_t offset, std::int64_t checkedIndex, QAction*& checkedItem,
                      void (AppDelegate::*click)(QAction*));
    bool createWorkingFolders();
    LiveSettings liveSettings() const;
    void adoptLiveSettings(const LiveSettings& live);
    QString soundInputText() const;
    void openSoundSettings();
    enum class Secondary { Hidden, Shown };
    bool hasCamera(const QString& messageText);
    void chooseSource(VideoSource primary, Secondary secondary);
    void showCaptureType(QAction* toolbarItem, QAction* menuItem);
    template <class Guide, class... Extra>
    void runGuide(const char* setting, std::int64_t& value, Extra&&... extra);
    void openPage(const QUrl& address);
    void setUpSourceControls();
    void setUpOutputSize();
    void applyCaptureOptions();
    void applyColourOptions();
    void applyOverlayOption();
    QString chooseWindowByText(const QString& text);
    void showMainWindow();
    void emptyWorkingFolders();

    bool startWriter();
    void startRecording();
    void resumeRecording();
    void startDurationTimer(Nanoseconds next);
    void runDueRefreshes(Nanoseconds until);
    void showControlsOf(RecordStatus status);
    void makeSoundRecorder();
    /// The level meter follows what the recorder hears while it records.
    void showSoundLevel(RecordStatus status);
    void tellSoundEvent(SoundEvent event, const QString& detail);
    void watchFreeSpace();
    void composePreview(const FrameInputs& inputs);
    void composeOutput(const FrameInputs& inputs, bool record);
    /// Null: there was no memory for the frame.
    void savePicture(const CVPixelBufferRef& frame);
    void pictureWritten(const TakenPicture& picture, const QString& problem, Nanoseconds due);
    QString offerPicture(const TakenPicture& picture);
    QString placePicture(const TakenPicture& picture, const QString& path);
    void tellPictureSaved(const QString& path);
    RecordingStatistics statistics() const; ///< only after a recording was started
    void beginStatistics();
    void writeStatistics();
    QString pictureShortage() const; ///< in this recording, in the user's words; empty without any
    void beginEnd();                 ///< of the recording: nothing more is recorded
    EndServices endServices();
    void beginProgress();
    void tellIncidents(const QString& problem);
    void report(const RecordingOutcome& outcome);

    Platform& platform_;
    Window_Main& window_;
    const LaunchOptions options_;
    MoreSettings choices_;
    std::unique_ptr<ChosenWindow> chosenWindow_;
    std::unique_ptr<class ScreenSizeWatch> screenSize_;
    std::unique_ptr<ConnectedCamera> connectedCamera_;
    Compositor compositor_;
    std::vector<RowRange> changedRows_;     ///< of the frame that is appended; here for its memory
    QString screenTrouble_;                 ///< what the user was told about the screen; empty while it can be read
    QString stopReason_;                    ///< why the program itself ends the recording; empty when the user does
    std::vector<RescuedRecording> rescued_; ///< of an earlier run, until finishRescue
    bool rescueCancelled_ = false;
    WorkQueue pictureWriter_;
};

} // namespace lumavex
