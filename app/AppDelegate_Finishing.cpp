// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"

#include "app/Window_Main.h"

#include <QAction>
#include <QLabel>
#include <QMenu>

namespace lumavex {

namespace {

/// Joins sentences to one text, without empty sentences and repetitions.
QString text(QStringList sentences)
{
    sentences.removeAll(QString());
    sentences.removeDuplicates();
    return sentences.join(u' ');
}

} // namespace

void AppDelegate::OnToolbarStop()
{
    stopRecording(platform_.runLoop->now());
}

void AppDelegate::stopRecording(Nanoseconds stoppedAt)
{
    if (recording.m_RecordStatus == Idle || recording.isEnding())
        return;
    if (recording.m_RecordStatus == Recording)
        runDueRefreshes(stoppedAt - Nanoseconds(1)); // a frame at the very end would extend beyond it
    Nanoseconds heardUntil = stoppedAt;
    if (!compose.lastAppended) { // stopped before the first frame was due: the movie still gets one frame and its sound
        grabScreen();
        composeOutput(frameInputs(), true);
        heardUntil += Nanoseconds(std::chrono::seconds(1)) / 30;
        if (recording.soundRecorder) {
            recording.soundRecorder->pause(stoppedAt);
            recording.soundRecorder->record(stoppedAt);
        }
    }
    beginEnd();
    beginProgress();
    recording.completion->begin(*recording.writerReadiness, heardUntil,
                                [this](float percentage) { recording.windowProgress->setProgress(percentage); });
    recording.completion->wait();
    recording.writerReadiness.reset();
    writeStatistics();
    showControlsOf(Idle);
    recording.m_RecordStatus = Idle;
    recording.m_Seconds_of_Recording = 0;
    window_.textDurationTime->setText(QStringLiteral("00:00:00"));
    window_.textDurationTime->hide();

    recording.end->join(recording.completion->lengths());
    const QString problem = text({stopReason_, recording.completion->problem()});
    tellIncidents(problem);
    report(recording.end->save(problem));
    window_.submenuVideoOutputFrame->setEnabled(true);
    stopReason_.clear();
    recording.completion.reset();
    recording.end.reset();
    window_.withdrawMessage(MessageTopic::Saving);
}

void AppDelegate::beginEnd()
{
    StoppedRecording stopped;
    stopped.files = {application.sffmpegPath, recording.s_Video_File_Source, recording.s_Sound_File_Source,
                     recording.s_AV_File_Source, static_cast<std::uint64_t>(recording.m_Seconds_of_Recording)};
    stopped.sound = recording.soundRecorder ? SoundInRecording::Present : SoundInRecording::Absent;
    stopped.framesPerSecond = recording.i_fps_of_Recording;
    stopped.folders = application;
    recording.end = std::make_unique<RecordingEnd>(stopped, endServices());
    recording.completion = std::make_unique<StreamCompletion>(
        RecordedStreams{*recording.assetWriter, recording.soundRecorder.get(), recording.s_Sound_File_Source,
                        recording.firstVideoFrame, recording.m_Current_Video_Frame, recording.i_Frames_Appended,
                        recording.i_Actual_FPS_while_Recording},
        *platform_.runLoop);
    platform_.runLoop->invalidate(recording.recordTimer);
    recording.recordTimer = 0;
}

EndServices AppDelegate::endServices()
{
    EndServices services =
        endServicesOn(*platform_.runLoop, *platform_.dialogs, platform_.readMovie, platform_.createChildProcess);
    if (options_.isUnattended())
        services.answers = EndServices::Answers::ByProgram;
    services.patience = options_.patience();
    services.beginProgress = [this] {
        if (!recording.windowProgress)
            beginProgress();
        recording.windowProgress->setCancelling(Window_Progress::Cancelling::Offered);
    };
    services.setProgress = [this](float percentage) { recording.windowProgress->setProgress(percentage); };
    services.endProgress = [this] { recording.windowProgress.reset(); };
    services.showMessage = [this](const QString& message) { window_.showMessage(message); };
    return services;
}

void AppDelegate::beginProgress()
{
    recording.windowProgress = std::make_unique<Window_Progress>(&window_);
    recording.windowProgress->setDescription(QStringLiteral("Performing operation... Please wait..."));
    connect(recording.windowProgress.get(), &Window_Progress::cancelled, this, &AppDelegate::cancelFinishing);
    if (window_.isVisible())
        recording.windowProgress->open();
}

void AppDelegate::tellIncidents(const QString& problem)
{
    for (const MessageTopic topic : {MessageTopic::Sound, MessageTopic::Rate, MessageTopic::Recording})
        window_.withdrawMessage(topic);
    if (camera.b_Camera_Connected && !camera.b_Camera_Gone)
        window_.withdrawMessage(MessageTopic::Camera); // the message that the camera is back
    const QString summary = text({recording.incidents.summary(recording.movieSeconds()), pictureShortage()});
    if (!summary.isEmpty())
        qWarning("%s", qUtf8Printable(summary)); // an unattended run reports the problem at the end
    if (const QString told = (problem + u' ' + summary).trimmed(); !told.isEmpty())
        window_.showMessage(MessageTopic::Recording, {told});
}

void AppDelegate::report(const RecordingOutcome& outcome)
{
    if (outcome.ending == Ending::Discarded && outcome.problem.isEmpty())
        window_.withdrawMessage(MessageTopic::Recording); // messages about its incidents are obsolete
    Q_EMIT recordingFinished(outcome.savedPath(), outcome.problem, outcome.kept());
}

void AppDelegate::stopBecause(const QString& reason)
{
    if (recording.m_RecordStatus == Idle || recording.isEnding() || !stopReason_.isEmpty())
        return;
    stopReason_ = reason.isEmpty() ? tr("The movie could not be written any further.") : reason;
    window_.showMessage(MessageTopic::Recording, {stopReason_});
    platform_.runLoop->scheduleOnce({0, 1}, [this](const TimerFiring&) {
        if (!stopReason_.isEmpty())
            OnToolbarStop();
    });
}

void AppDelegate::cancelFinishing()
{
    if (!recording.isEnding())
        return;
    recording.end->cancel();
    platform_.runLoop->wake();
}

void AppDelegate::finishWithoutScreen()
{
    if (recording.m_RecordStatus == Idle && !recording.isEnding())
        return;
    QStringList problems{stopReason_};
    if (!recording.isEnding()) {
        beginEnd();
        // Otherwise this was reported when Stop began.
        problems = {tr("The screen is gone, so the recording was ended."),
                    recording.incidents.summary(recording.movieSeconds())};
    }
    if (!recording.completion->hasBegun())
        recording.completion->begin(*recording.writerReadiness, platform_.runLoop->now(), [](float) {});
    problems.insert(1, recording.completion->problem());
    report(recording.end->endWithoutScreen(recording.completion->lengths(), text(problems),
                                           endServicesWithoutEvents(*platform_.dialogs, platform_.readMovie)));
}

} // namespace lumavex
