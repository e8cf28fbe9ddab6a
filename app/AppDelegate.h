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
    /// The start-up sequence. False when the program cannot continue; the user has been told the reason.
    bool applicationDidFinishLaunching();
    /// Ends the process at once. Saves nothing; the next start finds the files that a recording left.
    [[noreturn]] void Terminate_App();
    void OnMenuQuit() { Terminate_App(); }
    /// The command-line requests that failed, as text for the user; empty when none failed.
    QString launchProblem;
    /// Shows the message in the main window and writes it to standard error.
    void tell(MessageTopic topic, const Message& message);
    /// The higher of the screen's and the running camera's rate, at least 1.
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
    /// Outlines of the small pictures under these settings: those currently in the frame and the one being edited.
    std::vector<FrameOutline> outlinesOf(const DialogSettings& settings, SettingsSubject subject) const;
    /// Copies the dialog's values into the state and stores those that outlive the program.
    void storeSettings(const DialogSettings& settings);
    /// Applies the stored values: window level, camera, source, rate.
    void applySettings();

    // --- Summary of the coming recording: AppDelegate_Summary.cpp ---
    void showSummary();

    // --- Frame sizes and size menus: AppDelegate_FrameSizes.cpp ---
    void GetScreenSize();
    void FillArrayFrameResolution(); ///< a stored index outside the array counts as the default; the stored value stays
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
    bool createMultiWindowShot(const QList<WindowEntry>& windows); ///< like setOutputImage
    bool setOutputImage(const Grab& grab);                         ///< true when imgScreenCapture is from this grab
    /// Grabs the screen for the next frame.
    void grabScreen();
    /// The screen picture for the next frame; updates imgScreenCaptureToDraw and rect_Screen_Follow_Cursor.
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
    /// True when the item's command is available now. Only the commands decide this; nothing overrides them.
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
    /// Appends the frame, or the previous frame again when it is null, and advances the clock. `changed` is the area
    /// that differs from the frame appended before; std::nullopt: unknown. False when the frame was refused, which ends
    /// the recording.
    bool appendFrame(const CVPixelBufferRef& buffer, const std::optional<ChangedArea>& changed);

    // --- Statistics: AppDelegate_Statistics.cpp ---
    /// Creates the file that the options name, if any. Returns an empty text, or the reason for a failure as text for
    /// the user.
    QString openStatistics();

    // --- Finishing: AppDelegate_Finishing.cpp ---
    void OnToolbarStop();
    /// Acts as if Stop had been pressed at `stoppedAt`, a time in the past: later material is left out.
    void stopRecording(Nanoseconds stoppedAt);
    void OnMenuVideoStop() { OnToolbarStop(); }
    /// Ends the recording when the event loop runs next, keeps it, and reports the reason to the user.
    void stopBecause(const QString& reason);
    /// After Stop: cancels joining, or copying to another file system. The recording is kept and reported.
    void cancelFinishing();
    /// The screen is lost, and with it windows and the event loop: finishes the running recording without them. An
    /// unattended run saves the recording; otherwise the next start completes and reports it. Afterwards the process
    /// must end.
    void finishWithoutScreen();

    // --- Rescue: AppDelegate_Rescue.cpp ---
    /// Reports the recording of an earlier, killed run and completes it. The completion can be cancelled.
    void finishRescue();
    void cancelRescue() { rescueCancelled_ = true; }

    // --- Processor load: AppDelegate_ProcessorLoad.cpp ---
    void updateInfo();
    void Show_Window_Can_Not_Record();
    void Close_Window_Can_Not_Record();

Q_SIGNALS:
    /// The recording is at its final path, but Stop has not returned; or Record was refused. `path` and `problem` are
    /// the savedPath and the problem of the outcome.
    void recordingFinished(const QString& path, const QString& problem, lumavex::Kept kept);
    /// A snapshot was saved as `path`. Empty: it was not saved, and the user has been told.
    void pictureFinished(const QString& path);

private:
    enum class Preview { Shown, Hidden };
    void createPreviewWindow(Preview preview);
    bool isPreviewInSight() const;
    /// True when the next frame is needed: by a recording, a snapshot or a visible preview.
    bool isFrameWanted() const;
    /// Runs one step of the frame that was due at `deadline`: grab; compose, append or repeat.
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
    /// Makes the level meter follow the recorded sound.
    void showSoundLevel(RecordStatus status);
    void tellSoundEvent(SoundEvent event, const QString& detail);
    void watchFreeSpace();
    void composePreview(const FrameInputs& inputs);
    void composeOutput(const FrameInputs& inputs, bool record);
    /// Null: the frame could not be allocated.
    void savePicture(const CVPixelBufferRef& frame);
    void pictureWritten(const TakenPicture& picture, const QString& problem, Nanoseconds due);
    QString offerPicture(const TakenPicture& picture);
    QString placePicture(const TakenPicture& picture, const QString& path);
    void tellPictureSaved(const QString& path);
    RecordingStatistics statistics() const; ///< only after a recording has started
    void beginStatistics();
    void writeStatistics();
    QString pictureShortage() const; ///< of this recording, as text for the user; empty without any
    void beginEnd();                 ///< of the recording: nothing more is recorded from now on
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
    std::vector<RowRange> changedRows_;     ///< rows of the frame being appended; a member so that its memory is reused
    QString screenTrouble_;                 ///< screen problem last reported to the user; empty while the screen can be
                                            ///< read
    QString stopReason_;                    ///< reason for which the program ends the recording; empty when the user
                                            ///< ends it
    std::vector<RescuedRecording> rescued_; ///< from an earlier run, until finishRescue
    bool rescueCancelled_ = false;
    WorkQueue pictureWriter_;
};

} // namespace lumavex
