// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"

#include "recording/EncoderRun.h"
#include "recording/MovieContainer.h"
#include "recording/SavedMovie.h"

#include <QFile>

#include <utility>

namespace lumavex {

void AppDelegate::finishWithoutScreen()
{
    if (recording.m_RecordStatus == Idle && !recording.stopping)
        return;
    const QString reason = recording.stopping ? stopReason_ : tr("The screen is gone, so the recording was ended.");
    if (recording.m_RecordStatus != Idle && !recording.writerResult.valid()) {
        recording.i_Orig_Duration_in_Seconds = static_cast<std::uint64_t>(recording.m_Seconds_of_Recording);
        beginFinishing(platform_.runLoop->now());
    }
    if (!recording.writerResult.valid() || recording.writerResult.get().frames == 0)
        return; // no frame had come: the next start finds nothing to keep either
    const QString problem = noteLengths();
    const QString summary = // told before, where Stop had begun
        recording.stopping ? QString() : recording.incidents.summary(recording.movieSeconds());
    // With a user the files stay where the next start looks for them: there is nobody to tell now.
    if (options_.recordSeconds)
        saveWithoutScreen({reason, problem, summary});
}

MoveResult AppDelegate::moveWithoutScreen()
{
    if (recording.moveResult.valid())
        return recording.moveResult.get(); // begun before, by a thread that needs no screen
    const bool withSound = recording.soundRecorder != nullptr;
    // An encoder that had been started before may still write the usual file.
    const QString usual =
        std::exchange(recording.s_AV_File_Source, recording.s_Video_File_Source + QStringLiteral(".joined.mov"));
    const QString movie = withSound ? recording.s_AV_File_Source : recording.s_Video_File_Source;
    QString problem = withSound ? joinWithoutEvents(joiningJob()) : QString();
    QFile::remove(usual);
    if (problem.isEmpty())
        problem = whatIsMissing(platform_.readMovie(movie), recording.lengths);
    const std::optional<QString> path = platform_.dialogs->runSavePanel({});
    if (!problem.isEmpty() || !path)
        return {MoveOutcome::Failed, problem};
    // What copies it into a file of another kind needs the event loop.
    recording.s_Saved_File = promisesAnotherKind(*path) ? *path + QStringLiteral(".mov") : *path;
    const MoveResult moved = moveFile(movie, recording.s_Saved_File, ExistingDestination::Replace);
    if (moved.outcome == MoveOutcome::Moved)
        giveOrdinaryMode(recording.s_Saved_File);
    return moved;
}

void AppDelegate::saveWithoutScreen(QStringList problems)
{
    const MoveResult moved = moveWithoutScreen();
    QString problem = moved.outcome == MoveOutcome::Cancelled ? tr("Saving was cancelled.") : moved.error;
    // A file of another kind was compared with what was recorded before it was moved.
    if (moved.outcome == MoveOutcome::Moved && !promisesAnotherKind(recording.s_Saved_File))
        problem = whatIsMissing(platform_.readMovie(recording.s_Saved_File), recording.lengths);
    const bool whole = moved.outcome == MoveOutcome::Moved && problem.isEmpty();
    QFile::remove(recording.s_AV_File_Source);
    if (whole) {
        QFile::remove(recording.s_Video_File_Source);
        QFile::remove(recording.s_Sound_File_Source);
    } else {
        // Without sound the file that was moved is all there is.
        const RescuedRecording kept =
            QFile::exists(recording.s_Video_File_Source)
                ? putAside(recording.s_Video_File_Source, recording.s_Sound_File_Source, application.s_Recovered_Folder)
                : RescuedRecording{recording.s_Saved_File, {}, {}};
        problems += {problem, whereItIs(kept)};
    }
    if (whole && promisesAnotherKind(options_.output) && !promisesAnotherKind(recording.s_Saved_File))
        problems += tr("Without the screen it could only be saved as %1.").arg(recording.s_Saved_File);
    problems.removeAll(QString());
    Q_EMIT recordingFinished(whole ? recording.s_Saved_File : QString(), problems.join(u' '),
                             problems.isEmpty() ? Kept::AsAsked : Kept::Otherwise);
}

} // namespace lumavex
