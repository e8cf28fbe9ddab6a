// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"

#include "app/Window_Main.h"
#include "recording/MovieContainer.h"
#include "recording/SavedMovie.h"
#include "recording/WorkerRun.h"
#include "recording/WorkingFolders.h"

#include <QFile>
#include <QFileInfo>
#include <QUrl>

#include <atomic>

namespace lumavex {

AppDelegate::WorkingFiles AppDelegate::saveMovie(const QString& movie, const QString& problem)
{
    SavePanel panel;
    panel.title = QStringLiteral("Select a folder to save the video file recorded");
    panel.nameField = QFileInfo(recording.s_Video_File_Source).fileName();
    panel.filter = tr("Movies (*.mov)");
    panel.ending = QStringLiteral("mov");
    for (;;) {
        const std::optional<QString> path = platform_.dialogs->runSavePanel(panel);
        if (!path) {
            if (problem.isEmpty())
                window_.withdrawMessage(MessageTopic::Recording); // what befell it is of no interest any more
            Q_EMIT recordingFinished({}, problem, Kept::Nothing);
            return WorkingFiles::NotNeeded;
        }
        // In the window the name does not change what the file is.
        const bool otherKind = options_.isUnattended() && promisesAnotherKind(*path);
        QString file = movie;
        QString obstacle;
        if (isInWorkingFolder(*path)) {
            obstacle = tr("Lumavex empties this folder at every start.");
        } else if (otherKind) {
            file = pathIn(application.s_Video_Folder, QStringLiteral("finalvideo.") + QFileInfo(*path).suffix());
            obstacle = copyIntoContainer({application.sffmpegPath, movie, file, recording.i_fps_of_Recording,
                                          recording.i_Orig_Duration_in_Seconds},
                                         platform_.createChildProcess, *platform_.runLoop,
                                         {{}, [this] { return recording.cancelled.load(); }, options_.patience()});
        }
        const MoveResult moved =
            obstacle.isEmpty() ? moveWithProgress(file, *path) : MoveResult{MoveOutcome::Failed, obstacle};
        if (moved.outcome == MoveOutcome::Moved) {
            const QString missing = otherKind ? QString() : whatIsMissingFrom(*path); // it was compared before
            if (otherKind)
                QFile::remove(movie);
            if (!missing.isEmpty())
                return keepWhatWasRecorded(*path, (missing + u' ' + problem).trimmed());
            if (movie == recording.s_AV_File_Source) // its parts would be rescued, were the program ended at the alert
                for (const QString& part : {recording.s_Video_File_Source, recording.s_Sound_File_Source})
                    QFile::remove(part);
            Q_EMIT recordingFinished(*path, problem, problem.isEmpty() ? Kept::AsAsked : Kept::Otherwise);
            tellSaved(*path);
            return WorkingFiles::NotNeeded;
        }
        const QString why = moved.outcome == MoveOutcome::Cancelled ? tr("Saving was cancelled.") : moved.error;
        const int answer =
            platform_.dialogs->runAlert({tr("Error"),
                                         tr("The movie could not be saved there. %1 It is not lost: save it "
                                            "elsewhere or under another name, or close this and it is kept in %2.")
                                             .arg(why, application.s_Recovered_Folder),
                                         {tr("Save Elsewhere…"), tr("Close")},
                                         Alert::Reader::User});
        if (answer != 0)
            return keepMovie(movie, (problem + u' ' + why).trimmed());
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
    const QString where = whereItIs(kept);
    tellKept({tr("Error"), where, {}, Alert::Reader::User}, kept.movie);
    Q_EMIT recordingFinished({}, why + u' ' + where, Kept::Otherwise);
    return kept.error.isEmpty() ? WorkingFiles::NotNeeded : WorkingFiles::Needed;
}

QString AppDelegate::whatIsMissingFrom(const QString& movie)
{
    MovieFacts facts;
    runOnWorker(*platform_.runLoop, [&] { facts = platform_.readMovie(movie); });
    return whatIsMissing(facts, recording.lengths);
}

AppDelegate::WorkingFiles AppDelegate::keepWhatWasRecorded(const QString& saved, const QString& missing)
{
    QString text = tr("The movie saved as %1 is not what was recorded. %2").arg(saved, missing);
    WorkingFiles files = WorkingFiles::NotNeeded;
    QString shown = saved;
    // Without sound the file that was moved is all there is.
    if (QFileInfo::exists(recording.s_Video_File_Source)) {
        const RescuedRecording kept =
            putAside(recording.s_Video_File_Source, recording.s_Sound_File_Source, application.s_Recovered_Folder);
        files = kept.error.isEmpty() ? WorkingFiles::NotNeeded : WorkingFiles::Needed;
        text += u' ' + whereItIs(kept);
        shown = kept.movie;
    }
    tellKept({tr("Error"), text, {}, Alert::Reader::User}, shown);
    Q_EMIT recordingFinished({}, text, Kept::Otherwise);
    return files;
}

void AppDelegate::tellKept(Alert alert, const QString& path)
{
    const QString folder = QFileInfo(path).absolutePath();
    alert.buttons = QStringList{tr("Show in Folder"), tr("Close")};
    const int answer = platform_.dialogs->runAlert(alert);
    if (answer == 0 && !platform_.dialogs->open(QUrl::fromLocalFile(folder)))
        window_.showMessage(tr("No application is installed that shows folders. The folder is %1.").arg(folder));
}

MoveResult AppDelegate::moveWithProgress(const QString& from, const QString& to)
{
    QObject sheet; // gets the progress; what is still on its way at the end goes with it and opens nothing again
    std::atomic<int> percentage{-1};
    const auto copied = [this, &sheet, &percentage](std::int64_t done, std::int64_t total) {
        const int now = total > 0 ? static_cast<int>(done * 100 / total) : 0;
        if (percentage.exchange(now) != now)
            QMetaObject::invokeMethod(
                &sheet,
                [this, now] {
                    if (!recording.windowProgress) {
                        beginProgress();
                        recording.windowProgress->setCancelling(Window_Progress::Cancelling::Offered);
                    }
                    setProgress(static_cast<float>(now));
                },
                Qt::QueuedConnection);
        return !recording.cancelled;
    };
    if (!options_.isUnattended())
        recording.cancelled = false; // whatever was given up before, this place was chosen after it
    std::promise<MoveResult> outcome;
    recording.s_Saved_File = to;
    recording.moveResult = outcome.get_future().share();
    runOnWorker(*platform_.runLoop, [&] {
        flushToDisk(from); // written by another program, and soon the only copy
        const MoveResult result = moveFile(from, to, ExistingDestination::Replace, copied);
        if (result.outcome == MoveOutcome::Moved)
            giveOrdinaryMode(to);
        outcome.set_value(result);
    });
    if (recording.windowProgress)
        endProgress();
    return recording.moveResult.get();
}

void AppDelegate::tellSaved(const QString& path)
{
    const int answer = platform_.dialogs->runAlert({QStringLiteral("Success"),
                                                    QStringLiteral("Video file saved successfully."),
                                                    {QStringLiteral("Play Video File"), QStringLiteral("Close")},
                                                    Alert::Reader::User});
    if (answer == 0 && !platform_.dialogs->open(QUrl::fromLocalFile(path)))
        window_.showMessage(tr("No application is installed that opens %1.").arg(path));
}

} // namespace lumavex
