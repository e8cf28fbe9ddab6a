// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"

#include "recording/EncoderRun.h"
#include "recording/SavedMovie.h"

#include <QFile>

namespace lumavex {

void AppDelegate::finishWithoutScreen()
{
    if (recording.m_RecordStatus == Idle && !recording.stopping)
        return;
    if (recording.m_RecordStatus != Idle && !recording.writerResult.valid()) {
        recording.i_Orig_Duration_in_Seconds = static_cast<std::uint64_t>(recording.m_Seconds_of_Recording);
        beginFinishing(platform_.runLoop->now());
    }
    if (!recording.writerResult.valid() || recording.writerResult.get().frames == 0)
        return; // no frame had come: the next start finds nothing to keep either
    noteLengths();
    // With a user the files stay where the next start looks for them: there is nobody to tell now.
    if (options_.recordSeconds)
        saveWithoutScreen();
}

void AppDelegate::saveWithoutScreen()
{
    const QString reason = tr("The screen is gone, so the recording was ended.");
    const bool withSound = recording.soundRecorder != nullptr;
    // An encoder that had been started before may still write the usual file.
    QFile::remove(recording.s_AV_File_Source);
    recording.s_AV_File_Source = recording.s_Video_File_Source + QStringLiteral(".joined.mov");
    const QString movie = withSound ? recording.s_AV_File_Source : recording.s_Video_File_Source;
    const auto missingFrom = [this](const QString& path) {
        return whatIsMissing(platform_.readMovie(path), recording.lengths);
    };
    QString problem = withSound ? joinWithoutEvents(joiningJob()) : QString();
    if (problem.isEmpty())
        problem = missingFrom(movie);
    const std::optional<QString> path = platform_.dialogs->runSavePanel({});
    if (problem.isEmpty() && path) {
        const MoveResult moved = moveFile(movie, *path, ExistingDestination::Replace);
        problem = moved.outcome == MoveOutcome::Moved ? missingFrom(*path) : moved.error;
        if (problem.isEmpty()) {
            giveOrdinaryMode(*path);
            QFile::remove(recording.s_Video_File_Source);
            QFile::remove(recording.s_Sound_File_Source);
            Q_EMIT recordingFinished(*path, reason, Kept::Otherwise);
            return;
        }
    }
    QFile::remove(recording.s_AV_File_Source);
    const RescuedRecording kept =
        putAside(recording.s_Video_File_Source, recording.s_Sound_File_Source, application.s_Recovered_Folder);
    Q_EMIT recordingFinished({}, QStringList{reason, problem, whereItIs(kept)}.join(u' '), Kept::Otherwise);
}

} // namespace lumavex
