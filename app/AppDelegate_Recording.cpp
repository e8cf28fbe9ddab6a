// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"

#include "app/FocusKeeper.h"
#include "app/ProcessorUsage.h"
#include "app/ScreenSizeWatch.h"
#include "app/Window_Main.h"
#include "recording/Duration.h"
#include "recording/FreeSpace.h"
#include "recording/WorkingFolders.h"

#include <QAction>
#include <QFile>
#include <QLabel>
#include <QMenu>

#include <algorithm>
#include <array>

namespace lumavex {

void AppDelegate::OnToolbarRecord()
{
    if (recording.isEnding()) {
        window_.showMessage(
            MessageTopic::Saving,
            {tr("The recording before this one is still being saved."), {}, Message::Kind::Information});
        return;
    }
    if (recording.m_RecordStatus == Idle) {
        if (options_.load == LaunchOptions::Load::Refuse
            && static_cast<double>(application.fCPUUsage) > processorUsageLimit) {
            Show_Window_Can_Not_Record();
            report(
                {Ending::Nothing, {}, tr("The machine is too busy to record (use --ignore-load to record anyway).")});
            return;
        }
        if (const QString refusal = screenSize_->refusal(); !refusal.isEmpty()) {
            report({Ending::Nothing, {}, refusal});
            return;
        }
        // Frames are made only while a preview exists, visible or not.
        if (platform_.runLoop->nextDeadline(compose.timer_Open_Preview_Window) > Nanoseconds(0))
            Timer_Open_Preview_Window_Routine();
        else if (!compose.windowPreview)
            createPreviewWindow(Preview::Hidden);
        if (!startWriter())
            return;
        startRecording();
    } else if (recording.m_RecordStatus == Paused) {
        resumeRecording();
    }
    showControlsOf(Recording);
}

bool AppDelegate::startWriter()
{
    const auto refuse = [this](const QString& problem) {
        platform_.dialogs->runAlert({tr("Error"), problem, {tr("Close")}, Alert::Reader::User});
        report({Ending::Nothing, {}, problem});
        return false;
    };
    const QString& folder = application.s_Video_Folder;
    recording.s_Video_File_Source = pathIn(folder, dateStamp(QDateTime::currentDateTime()) + QStringLiteral(".mov"));
    recording.s_AV_File_Source = pathIn(folder, kJoinedFileName);
    recording.s_Sound_File_Source = pathIn(folder, kSoundFileName);
    for (const QString& stale :
         {recording.s_Video_File_Source, recording.s_AV_File_Source, recording.s_Sound_File_Source})
        QFile::remove(stale);
    if (mustEndRecording(folder, {}))
        return refuse(tr("There is too little space left on the disk that holds %1: a recording needs at least %2 MB.")
                          .arg(folder)
                          .arg(kReserveBytes >> 20));

    recording.i_Actual_FPS_while_Recording = recording.i_fps_of_Recording;
    recording.m_Current_Video_Frame = CMTimeMake(1, std::max(recording.i_fps_of_Recording, 30));
    recording.firstVideoFrame = recording.m_Current_Video_Frame;
    recording.size_Movie = compose.size_Video_Output;

    recording.soundRecorder.reset();
    recording.writerReadiness.reset();
    recording.assetWriter = platform_.createMovieWriter(
        recording.s_Video_File_Source,
        {recording.size_Movie.width, recording.size_Movie.height, recording.i_fps_of_Recording});
    recording.assetInput = &recording.assetWriter->input();
    recording.assetInputAdaptor = &recording.assetWriter->adaptor();
    recording.writerReadiness = std::make_unique<WriterReadiness>(*recording.assetWriter);
    const QString problem = recording.assetWriter->startWriting();
    if (!problem.isEmpty())
        return refuse(problem);
    return true;
}

void AppDelegate::startRecording()
{
    if (recording.b_Record_Include_Audio == 1)
        makeSoundRecorder(); // before the origin is set: its library may have to be read from disk first
    // Grab, frame, tick and sound share one origin, whatever the timers' phase was before: the frame at time t shows
    // the screen at origin + t. Movie and sound begin with the first frame.
    RunLoop& runLoop = *platform_.runLoop;
    const Nanoseconds origin = runLoop.now();
    recording.notBefore = origin;
    recording.i_debug_number_of_view_refresh = 0;
    recording.i_Frames_Appended = 0;
    recording.m_Seconds_of_Recording = 0;
    compose.lastAppended.reset();
    for (const MessageTopic topic : {MessageTopic::Sound, MessageTopic::Rate, MessageTopic::Recording})
        window_.withdrawMessage(topic);
    recording.incidents.clear();
    if (camera.b_Camera_Gone && compose.showsCamera())
        recording.incidents.begin(RecordingIncidents::Kind::CameraGone, 0);
    beginStatistics();

    for (const TimerId timer : {application.timerVideoRefresh, compose.timerViewRefresh}) {
        if (recording.i_fps_of_Recording >= 30)
            runLoop.restart(timer, origin); // the time of the first frame is one interval
        else
            runLoop.setNextDeadline(timer, origin + Nanoseconds(std::chrono::seconds(1)) / 30);
    }
    if (recording.soundRecorder)
        recording.soundRecorder->record(runLoop.nextDeadline(compose.timerViewRefresh));
    runLoop.restart(compose.timerdebug1Second, origin);
    startDurationTimer(origin + std::chrono::seconds(1));

    window_.submenuVideoOutputFrame->setEnabled(false);
    recording.m_RecordStatus = Recording;
}

void AppDelegate::resumeRecording()
{
    // Each timer continues with the remainder of its period at the pause, so that neither stream contains the paused
    // time.
    RunLoop& runLoop = *platform_.runLoop;
    const Nanoseconds now = runLoop.now();
    recording.notBefore = now;
    if (recording.soundRecorder) // paused before the first frame: sound still begins with that frame
        recording.soundRecorder->record(recording.i_Frames_Appended > 0 ? now : now + recording.refreshRemainder);
    for (const TimerId timer : {application.timerVideoRefresh, compose.timerViewRefresh})
        runLoop.setNextDeadline(timer, now + recording.refreshRemainder);
    runLoop.setNextDeadline(compose.timerdebug1Second, now + recording.secondRemainder);
    startDurationTimer(now + recording.durationRemainder);
    recording.m_RecordStatus = Recording;
}

void AppDelegate::OnToolbarPause()
{
    if (recording.m_RecordStatus != Recording || recording.isEnding())
        return;
    RunLoop& runLoop = *platform_.runLoop;
    const Nanoseconds now = runLoop.now();
    runDueRefreshes(now);
    recording.refreshRemainder = runLoop.nextDeadline(compose.timerViewRefresh) - now;
    recording.secondRemainder = runLoop.nextDeadline(compose.timerdebug1Second) - now;
    recording.durationRemainder = runLoop.nextDeadline(recording.recordTimer) - now;
    if (recording.soundRecorder)
        recording.soundRecorder->pause(now);
    recording.recordedBefore += now - recording.notBefore;
    recording.m_RecordStatus = Paused;
    showControlsOf(Paused);
    runLoop.invalidate(recording.recordTimer);
    recording.recordTimer = 0;
}

void AppDelegate::startDurationTimer(Nanoseconds next)
{
    platform_.runLoop->invalidate(recording.recordTimer);
    recording.recordTimer = platform_.runLoop->scheduleRepeating(
        {1, 1}, RunLoopMode::Common, [this](const TimerFiring&) { Update_Record_Duration(); });
    platform_.runLoop->setNextDeadline(recording.recordTimer, next);
}

void AppDelegate::runDueRefreshes(Nanoseconds until)
{
    // Work due before Pause or Stop belongs to the recording. All other events wait: one may open a dialog, and
    // recording would continue behind it.
    const std::array timers{application.timerVideoRefresh, compose.timerViewRefresh, compose.timerdebug1Second,
                            recording.recordTimer};
    platform_.runLoop->runDue(timers, until);
}

void AppDelegate::Update_Record_Duration()
{
    ++recording.m_Seconds_of_Recording;
    window_.textDurationTime->setText(timeFormatted(recording.m_Seconds_of_Recording));
}

void AppDelegate::showControlsOf(RecordStatus status)
{
    const FocusKeeper focus(window_);
    for (QAction* record : {window_.btnRecord, window_.menuRecord})
        record->setEnabled(status != Recording);
    for (QAction* pause : {window_.btnPause, window_.menuPause})
        pause->setEnabled(status == Recording);
    for (QAction* stop : {window_.btnStop, window_.menuStop})
        stop->setEnabled(status != Idle);
    for (QAction* preferences : {window_.menuPreferences, window_.toolbarPreferences})
        preferences->setEnabled(status == Idle);
    if (status != Idle)
        window_.textDurationTime->show();
    showSoundLevel(status);
}

bool AppDelegate::appendFrame(const CVPixelBufferRef& buffer, const std::optional<ChangedArea>& changed)
{
    if (recording.writerReadiness->waitUntilReady() == Readiness::Failed) {
        stopBecause(recording.assetWriter->error());
        return false;
    }
    PixelBufferAdaptor& adaptor = *recording.assetInputAdaptor;
    const CMTime time = recording.m_Current_Video_Frame;
    bool appended = false;
    if (!buffer || (changed && changed->isEmpty())) {
        appended = adaptor.appendPrevious_withPresentationTime(time);
    } else if (changed) {
        changedRows_.clear();
        for (const QRect& rows : changed->asRows(0, buffer->width))
            changedRows_.push_back({rows.top(), rows.height()});
        appended = adaptor.appendChangedRows_withPresentationTime(buffer, changedRows_, time);
    } else {
        appended = adaptor.appendPixelBuffer_withPresentationTime(buffer, time);
    }
    if (!appended) {
        stopBecause(recording.assetWriter->error());
        return false;
    }
    recording.m_Current_Video_Frame = CMTimeAdd(time, CMTimeMake(1, recording.i_Actual_FPS_while_Recording));
    ++recording.i_debug_number_of_view_refresh;
    ++recording.i_Frames_Appended;
    return true;
}

void AppDelegate::watchFreeSpace()
{
    const bool sound = recording.soundRecorder != nullptr;
    RecordingSize size;
    size.movieBytes = recording.assetWriter->bytesWritten();
    size.soundBytes = sound ? QFile(recording.s_Sound_File_Source).size() : 0;
    size.frames = static_cast<std::int64_t>(CMTimeGetSeconds(recording.m_Current_Video_Frame)
                                            * recording.i_Actual_FPS_while_Recording);
    size.sound = sound ? SoundInRecording::Present : SoundInRecording::Absent;
    if (mustEndRecording(application.s_Video_Folder, size))
        stopBecause(
            tr("There is almost no space left on the disk, so the recording was ended. Nothing of it is lost."));
}

} // namespace lumavex
