// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"

#include "app/Window_Main.h"
#include "recording/EncoderRun.h"
#include "recording/WorkerRun.h"
#include "recording/WorkingFolders.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QMenu>

#include <atomic>

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
        platform_.runLoop->runDue(stoppedAt - Nanoseconds(1)); // refreshes that were due before belong to the recording
    if (recording.m_RecordStatus == Idle || recording.stopping)
        return;           // one of the timers that were due has stopped it
    if (!lastAppended_) { // stopped before the first frame was due: the movie still shows something
        grabScreen();
        composeOutput(frameInputs(), true);
    }
    recording.stopping = true;
    platform_.runLoop->invalidate(recording.recordTimer);
    recording.recordTimer = 0;

    beginProgress();
    QStringList problems{finishWriter(stoppedAt)};
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
    if (!problem.isEmpty())
        window_.showMessage(problem);
    const WorkingFiles files =
        joinProblem.isEmpty()
            ? saveMovie(withSound ? recording.s_AV_File_Source : recording.s_Video_File_Source, problem)
            : endWithoutJoin(joinProblem);
    if (files == WorkingFiles::NotNeeded) {
        QFile::remove(recording.s_Video_File_Source);
        QFile::remove(recording.s_Sound_File_Source);
    }
    window_.submenuVideoOutputFrame->setEnabled(true);
    stopReason_.clear();
    recording.stopping = false;
}

void AppDelegate::stopBecause(const QString& reason)
{
    if (recording.m_RecordStatus == Idle || recording.stopping || !stopReason_.isEmpty())
        return;
    stopReason_ = reason.isEmpty() ? tr("The movie could not be written any further.") : reason;
    window_.showMessage(stopReason_);
    platform_.runLoop->scheduleOnce({0, 1}, [this](const TimerFiring&) {
        if (!stopReason_.isEmpty())
            OnToolbarStop();
    });
}

void AppDelegate::beginProgress()
{
    recording.windowProgress = std::make_unique<Window_Progress>(&window_);
    recording.windowProgress->setDescription(QStringLiteral("Performing operation... Please wait..."));
    if (window_.isVisible())
        recording.windowProgress->open();
}

void AppDelegate::setProgress(float percentage)
{
    recording.windowProgress->setProgress(percentage);
    Q_EMIT progressChanged(percentage);
}

void AppDelegate::endProgress()
{
    recording.windowProgress.reset();
}

QString AppDelegate::finishWriter(Nanoseconds stoppedAt)
{
    recording.writerReadiness->waitUntilReady();
    setProgress(20);
    // The handler runs on a thread of the writer's; what it shares outlives this call, should an alert end it early.
    struct Outcome {
        std::atomic<bool> done{false};
        MovieWriter::Result result;
    };
    const auto outcome = std::make_shared<Outcome>();
    recording.assetWriter->finishWritingWithCompletionHandler(
        recording.m_Current_Video_Frame, [this, outcome](const MovieWriter::Result& result) {
            outcome->result = result;
            outcome->done = true;
            QMetaObject::invokeMethod(
                this, [] {}, Qt::QueuedConnection); // wakes the loop below
        });
    setProgress(30);
    QString soundProblem;
    if (recording.soundRecorder)
        soundProblem = recording.soundRecorder->stop(stoppedAt);
    setProgress(40);
    platform_.runLoop->runUntil([&] { return outcome->done.load(); });
    recording.writerReadiness.reset();
    return outcome->result.error.isEmpty() ? soundProblem : outcome->result.error;
}

QString AppDelegate::joinSoundAndPicture()
{
    setProgress(0);
    recording.u_Type_Progress = 0;
    recording.terminated = false;
    EncoderJob job;
    job.sffmpegPath = application.sffmpegPath;
    job.s_Video_File_Source = recording.s_Video_File_Source;
    job.s_Sound_File_Source = recording.s_Sound_File_Source;
    job.s_AV_File_Source = recording.s_AV_File_Source;
    job.i_Orig_Duration_in_Seconds = recording.i_Orig_Duration_in_Seconds;
    const QString problem = runEncoder(job, platform_.createChildProcess, *platform_.runLoop,
                                       [this](float percentage) { setProgress(percentage); });
    recording.terminated = true;
    return problem;
}

AppDelegate::WorkingFiles AppDelegate::endWithoutJoin(const QString& reason)
{
    const RescuedRecording kept =
        putAside(recording.s_Video_File_Source, recording.s_Sound_File_Source, application.s_Recovered_Folder);
    const QString where = kept.sound.isEmpty()
                              ? tr("The picture was kept as %1.").arg(kept.movie)
                              : tr("Picture and sound were kept as %1 and %2.").arg(kept.movie, kept.sound);
    const QString text =
        tr("Sound and picture could not be joined. %1\n\n%2").arg(reason, (kept.error + u' ' + where).trimmed());
    const int answer = platform_.dialogs->runAlert({tr("Error"), text, {tr("Save Video Without Sound"), tr("Close")}});
    QFile::remove(recording.s_AV_File_Source); // what a failed encoder left
    if (answer == 0)
        saveMovie(kept.movie, text); // cancelled, it stays where it was kept
    else
        Q_EMIT recordingFinished({}, text);
    return kept.error.isEmpty() ? WorkingFiles::NotNeeded : WorkingFiles::Needed;
}

AppDelegate::WorkingFiles AppDelegate::saveMovie(const QString& movie, const QString& problem)
{
    SavePanel panel;
    panel.title = QStringLiteral("Select a folder to save the video file recorded");
    panel.nameField = QFileInfo(recording.s_Video_File_Source).fileName();
    panel.filter = tr("Movies (*.mov)");
    for (;;) {
        const std::optional<QString> path = platform_.dialogs->runSavePanel(panel);
        if (!path) {
            Q_EMIT recordingFinished({}, problem);
            return WorkingFiles::NotNeeded;
        }
        const MoveResult moved =
            isInWorkingFolder(*path)
                ? MoveResult{MoveOutcome::Failed, tr("Lumavex empties this folder at every start.")}
                : moveWithProgress(movie, *path);
        if (moved.outcome == MoveOutcome::Moved) {
            Q_EMIT recordingFinished(*path, problem);
            tellSaved(*path);
            return WorkingFiles::NotNeeded;
        }
        const QString why = moved.outcome == MoveOutcome::Cancelled ? tr("Saving was cancelled.") : moved.error;
        const int answer =
            platform_.dialogs->runAlert({tr("Error"),
                                         tr("The movie could not be saved there. %1 It is not lost.").arg(why),
                                         {tr("Save Elsewhere…"), tr("Close")}});
        if (answer != 0)
            return keepMovie(movie, why);
    }
}

bool AppDelegate::isInWorkingFolder(const QString& path) const
{
    const QString folder = QFileInfo(QFileInfo(path).absolutePath()).canonicalFilePath() + u'/';
    for (const QString& working :
         {application.s_Output_Folder, application.s_Video_Folder, application.s_Picture_Folder}) {
        const QString present = QFileInfo(working).canonicalFilePath();
        if (!present.isEmpty() && folder.startsWith(present + u'/'))
            return true;
    }
    return false;
}

AppDelegate::WorkingFiles AppDelegate::keepMovie(const QString& movie, const QString& why)
{
    RescuedRecording kept{movie, {}, {}};
    if (isInWorkingFolder(movie)) {
        // The joined movie takes the picture's place and with it the stamped name, by which the next start finds it
        // should it have to stay.
        const bool stamped = movie == recording.s_Video_File_Source
                             || moveFile(movie, recording.s_Video_File_Source, ExistingDestination::Replace).outcome
                                    == MoveOutcome::Moved;
        kept = putAside(stamped ? recording.s_Video_File_Source : movie, {}, application.s_Recovered_Folder);
    }
    const QString where = (kept.error + u' ' + tr("The recording was kept as %1.").arg(kept.movie)).trimmed();
    platform_.dialogs->runAlert({tr("Error"), where, {tr("Close")}});
    Q_EMIT recordingFinished({}, why + u' ' + where);
    return kept.error.isEmpty() ? WorkingFiles::NotNeeded : WorkingFiles::Needed;
}

MoveResult AppDelegate::moveWithProgress(const QString& from, const QString& to)
{
    MoveResult result;
    std::atomic<int> percentage{-1};
    const auto copied = [this, &percentage](std::int64_t done, std::int64_t total) {
        const int now = total > 0 ? static_cast<int>(done * 100 / total) : 0;
        if (percentage.exchange(now) != now)
            QMetaObject::invokeMethod(
                this,
                [this, now] {
                    if (!recording.windowProgress)
                        beginProgress();
                    setProgress(static_cast<float>(now));
                },
                Qt::QueuedConnection);
        return true;
    };
    runOnWorker(*platform_.runLoop, [&] {
        flushToDisk(from); // written by another program, and soon the only copy
        result = moveFile(from, to, ExistingDestination::Replace, copied);
        if (result.outcome == MoveOutcome::Moved)
            giveOrdinaryMode(to);
    });
    QCoreApplication::sendPostedEvents(this); // progress still on its way must not open the sheet again
    if (recording.windowProgress)
        endProgress();
    return result;
}

void AppDelegate::tellSaved(const QString& path)
{
    const int answer = platform_.dialogs->runAlert({QStringLiteral("Success"),
                                                    QStringLiteral("Video file saved successfully."),
                                                    {QStringLiteral("Play Video File"), QStringLiteral("Close")}});
    if (answer == 0 && !platform_.dialogs->open(QUrl::fromLocalFile(path)))
        window_.showMessage(tr("No application is installed that opens %1.").arg(path));
}

void AppDelegate::finishRescue()
{
    if (rescued_.empty())
        return;
    const std::vector<RescuedRecording> recordings = std::exchange(rescued_, {});
    const auto notes = completeRescued(
        recordings, {platform_.repairMovie, platform_.createChildProcess, application.sffmpegPath}, *platform_.runLoop);
    platform_.dialogs->runAlert({tr("A recording was recovered"), rescueMessage(notes), {tr("Close")}});
}

} // namespace lumavex
