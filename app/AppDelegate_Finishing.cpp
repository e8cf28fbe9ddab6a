// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"

#include "app/Window_Main.h"
#include "recording/EncoderRun.h"
#include "recording/RecordedFiles.h"

#include <QAction>
#include <QFile>
#include <QLabel>
#include <QMenu>

#include <algorithm>
#include <cmath>

namespace lumavex {

void AppDelegate::OnToolbarStop()
{
    stopRecording(platform_.runLoop->now());
}

void AppDelegate::stopRecording(Nanoseconds stoppedAt)
{
    if (recording.m_RecordStatus == Idle || recording.stopping)
        return;
    if (recording.m_RecordStatus == Recording)
        runDueRefreshes(stoppedAt - Nanoseconds(1)); // a frame of the last instant would last beyond it
    Nanoseconds heardUntil = stoppedAt;
    if (!compose.lastAppended) { // stopped before the first frame was due: the movie still shows and sounds something
        grabScreen();
        composeOutput(frameInputs(), true);
        heardUntil += Nanoseconds(std::chrono::seconds(1)) / 30;
        if (recording.soundRecorder) {
            recording.soundRecorder->pause(stoppedAt);
            recording.soundRecorder->record(stoppedAt);
        }
    }
    recording.stopping = true;
    recording.cancelled = false;
    platform_.runLoop->invalidate(recording.recordTimer);
    recording.recordTimer = 0;

    beginProgress();
    QStringList problems{finishWriter(heardUntil)};
    writeStatistics();
    showControlsOf(Idle);
    recording.m_RecordStatus = Idle;
    recording.i_Orig_Duration_in_Seconds = static_cast<std::uint64_t>(recording.m_Seconds_of_Recording);
    recording.m_Seconds_of_Recording = 0;
    window_.textDurationTime->setText(QStringLiteral("00:00:00"));
    window_.textDurationTime->hide();

    const bool withSound = recording.soundRecorder != nullptr;
    const QString joinProblem = withSound ? joinSoundAndPicture() : QString();
    endProgress();

    problems.prepend(stopReason_);
    problems.removeAll(QString());
    problems.removeDuplicates();
    const QString problem = problems.join(u' ');
    tellOutcome(problem);
    const WorkingFiles files =
        joinProblem.isEmpty()
            ? saveMovie(withSound ? recording.s_AV_File_Source : recording.s_Video_File_Source, problem)
            : endWithoutJoin((joinProblem + u' ' + problem).trimmed());
    if (files == WorkingFiles::NotNeeded) {
        QFile::remove(recording.s_Video_File_Source);
        QFile::remove(recording.s_Sound_File_Source);
    }
    window_.submenuVideoOutputFrame->setEnabled(true);
    stopReason_.clear();
    recording.stopping = false;
    window_.withdrawMessage(MessageTopic::Saving);
}

void AppDelegate::tellOutcome(const QString& problem)
{
    for (const MessageTopic topic : {MessageTopic::Sound, MessageTopic::Rate, MessageTopic::Recording})
        window_.withdrawMessage(topic);
    if (camera.b_Camera_Connected && !camera.b_Camera_Gone)
        window_.withdrawMessage(MessageTopic::Camera); // that it is back
    QStringList befell{recording.incidents.summary(recording.movieSeconds()), pictureShortage()};
    befell.removeAll(QString());
    const QString summary = befell.join(u' ');
    if (!summary.isEmpty())
        qWarning("%s", qUtf8Printable(summary)); // without a user the problem is told at the end
    if (const QString text = (problem + u' ' + summary).trimmed(); !text.isEmpty())
        window_.showMessage(MessageTopic::Recording, {text});
}

void AppDelegate::stopBecause(const QString& reason)
{
    if (recording.m_RecordStatus == Idle || recording.stopping || !stopReason_.isEmpty())
        return;
    stopReason_ = reason.isEmpty() ? tr("The movie could not be written any further.") : reason;
    window_.showMessage(MessageTopic::Recording, {stopReason_});
    platform_.runLoop->scheduleOnce({0, 1}, [this](const TimerFiring&) {
        if (!stopReason_.isEmpty())
            OnToolbarStop();
    });
}

void AppDelegate::beginProgress()
{
    recording.windowProgress = std::make_unique<Window_Progress>(&window_);
    recording.windowProgress->setDescription(QStringLiteral("Performing operation... Please wait..."));
    connect(recording.windowProgress.get(), &Window_Progress::cancelled, this, &AppDelegate::cancelFinishing);
    if (window_.isVisible())
        recording.windowProgress->open();
}

void AppDelegate::setProgress(float percentage)
{
    if (recording.windowProgress) // none without a screen
        recording.windowProgress->setProgress(percentage);
    Q_EMIT progressChanged(percentage);
}

void AppDelegate::endProgress()
{
    recording.windowProgress.reset();
}

void AppDelegate::cancelFinishing()
{
    recording.cancelled = true;
    QMetaObject::invokeMethod(
        this, [] {}, Qt::QueuedConnection); // wakes the loop that waits for what is cancelled
}

QString AppDelegate::beginFinishing(Nanoseconds heardUntil)
{
    recording.writerReadiness->waitUntilReady();
    setProgress(20);
    // The handler runs on a thread of the writer's; what it shares outlives this call, should an alert end it early.
    const auto outcome = std::make_shared<std::promise<MovieWriter::Result>>();
    recording.writerResult = outcome->get_future().share();
    recording.assetWriter->finishWritingWithCompletionHandler(
        recording.m_Current_Video_Frame, [this, outcome](const MovieWriter::Result& result) {
            outcome->set_value(result);
            QMetaObject::invokeMethod(
                this, [] {}, Qt::QueuedConnection); // wakes the loop that waits for it
        });
    setProgress(30);
    QString soundProblem;
    if (recording.soundRecorder)
        soundProblem = recording.soundRecorder->stop(heardUntil);
    setProgress(40);
    return soundProblem;
}

QString AppDelegate::finishWriter(Nanoseconds heardUntil)
{
    const QString soundProblem = beginFinishing(heardUntil);
    platform_.runLoop->runUntil(
        [this] { return recording.writerResult.wait_for(std::chrono::seconds(0)) == std::future_status::ready; });
    recording.writerReadiness.reset();
    const QString problem = noteLengths();
    return (problem + u' ' + soundProblem).trimmed();
}

QString AppDelegate::noteLengths()
{
    const MovieWriter::Result& result = recording.writerResult.get();
    recording.lengths = {};
    recording.lengths.frames = result.frames;
    if (recording.soundRecorder)
        recording.lengths.soundSeconds = soundSeconds(recording.s_Sound_File_Source);
    if (!result.error.isEmpty())
        return result.error;
    recording.lengths.pictureSeconds = recording.movieSeconds();
    if (result.frames != recording.i_Frames_Appended)
        return tr("Of %1 frames %2 are in the movie.").arg(recording.i_Frames_Appended).arg(result.frames);
    // In seconds. What was not heard is silence, so that the lengths agree but for the last frame: it lasts its whole
    // time whenever Stop came, a second at one frame a second.
    const double tolerance = 1 + 1.0 / recording.i_Actual_FPS_while_Recording;
    const double apart =
        recording.lengths.soundSeconds.value_or(*recording.lengths.pictureSeconds) - *recording.lengths.pictureSeconds;
    return std::abs(apart) < tolerance
               ? QString()
               : tr("Sound and picture differ in length by %1 s.").arg(std::abs(apart), 0, 'f', 1);
}

EncoderJob AppDelegate::joiningJob() const
{
    EncoderJob job;
    job.sffmpegPath = application.sffmpegPath;
    job.s_Video_File_Source = recording.s_Video_File_Source;
    job.s_Sound_File_Source = recording.s_Sound_File_Source;
    job.s_AV_File_Source = recording.s_AV_File_Source;
    job.i_Orig_Duration_in_Seconds = recording.i_Orig_Duration_in_Seconds;
    return job;
}

QString AppDelegate::joinSoundAndPicture()
{
    setProgress(0);
    recording.encoder = {};
    recording.windowProgress->setCancelling(Window_Progress::Cancelling::Offered);
    const EncoderWatch watch{[this](float percentage) { setProgress(percentage); },
                             [this] { return recording.cancelled.load(); }, options_.patience()};
    QString problem =
        runEncoder(joiningJob(), recording.encoder, platform_.createChildProcess, *platform_.runLoop, watch);
    if (problem.isEmpty())
        problem = whatIsMissingFrom(recording.s_AV_File_Source);
    return problem;
}

AppDelegate::WorkingFiles AppDelegate::endWithoutJoin(const QString& reason)
{
    const RescuedRecording kept =
        putAside(recording.s_Video_File_Source, recording.s_Sound_File_Source, application.s_Recovered_Folder);
    const QString text = tr("Sound and picture could not be joined. %1\n\n%2").arg(reason, whereItIs(kept));
    const int answer = platform_.dialogs->runAlert(
        {tr("Error"), text, {tr("Save Video Without Sound"), tr("Close")}, Alert::Reader::User});
    QFile::remove(recording.s_AV_File_Source); // what a failed encoder left
    recording.lengths.soundSeconds.reset();
    if (answer == 0)
        saveMovie(kept.movie, text); // cancelled, it stays where it was kept
    else
        Q_EMIT recordingFinished({}, text, Kept::Otherwise);
    return kept.error.isEmpty() ? WorkingFiles::NotNeeded : WorkingFiles::Needed;
}

void AppDelegate::finishRescue()
{
    if (rescued_.empty())
        return;
    const std::vector<RescuedRecording> recordings = std::exchange(rescued_, {});
    // Not over the main window, in which the next recording may be begun meanwhile, and only when it takes a while.
    Window_Progress progress(&window_);
    progress.setWindowModality(Qt::NonModal);
    progress.setAttribute(Qt::WA_ShowWithoutActivating);
    progress.setDescription(tr("Completing what was recorded before Lumavex was closed…"));
    progress.setCancelling(Window_Progress::Cancelling::Offered);
    connect(&progress, &Window_Progress::cancelled, this, &AppDelegate::cancelRescue);
    const TimerId show = platform_.runLoop->scheduleOnce({1, 1}, [this, &progress](const TimerFiring&) {
        if (window_.isVisible())
            progress.show();
    });
    const auto notes = completeRescued(recordings,
                                       {platform_.repairMovie,
                                        platform_.readMovie,
                                        platform_.createChildProcess,
                                        application.sffmpegPath,
                                        {[&progress](float percentage) { progress.setProgress(percentage); },
                                         [this] { return recording.rescueCancelled; }, options_.patience()}},
                                       *platform_.runLoop);
    platform_.runLoop->invalidate(show);
    progress.hide();
    tellKept({tr("A recording was recovered"), rescueMessage(notes), {}}, notes.front().path);
    forgetRescued(recordings);
}

} // namespace lumavex
