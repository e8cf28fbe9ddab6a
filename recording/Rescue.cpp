// SPDX-License-Identifier: GPL-3.0-or-later
#include "recording/Rescue.h"

#include "recording/EncoderRun.h"
#include "recording/FileMove.h"
#include "recording/RecordedFiles.h"
#include "recording/WorkerRun.h"
#include "recording/WorkingFolders.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

namespace lumavex {

namespace {

struct Text {
    Q_DECLARE_TR_FUNCTIONS(Rescue)
};

QString joiningPath(const QString& movie)
{
    const QFileInfo about(movie);
    return pathIn(about.absolutePath(), u'.' + about.completeBaseName() + QStringLiteral(".joining.mov"));
}

/// Where a movie's sound lies when it bears the movie's name.
QString ownSoundPath(const QString& movie)
{
    const QFileInfo about(movie);
    return pathIn(about.absolutePath(), about.completeBaseName() + QStringLiteral(".wav"));
}

/// A name, without suffix, that neither a movie nor a sound file in the folder bears.
QString freeBaseName(const QString& folder, const QString& wanted)
{
    const auto taken = [&folder](const QString& name) {
        return QFileInfo::exists(pathIn(folder, name + QStringLiteral(".mov")))
               || QFileInfo::exists(pathIn(folder, name + QStringLiteral(".wav")));
    };
    QString name = wanted;
    for (int number = 2; taken(name); ++number)
        name = QStringLiteral("%1-%2").arg(wanted).arg(number);
    return name;
}

/// Joins into a hidden file, which then takes the movie's place. Empty, or why the two files are still two.
QString joinInPlace(const RescuedRecording& recording, const RescueTools& tools, RunLoop& runLoop)
{
    const EncoderJob job{tools.sffmpegPath, recording.movie, recording.sound, joiningPath(recording.movie), 0};
    QFile::remove(job.s_AV_File_Source); // of a run that was killed while joining
    const QString failure = runEncoder(job, tools.createChildProcess, runLoop, {});
    if (!failure.isEmpty()) {
        QFile::remove(job.s_AV_File_Source);
        return failure;
    }
    MoveResult replaced;
    runOnWorker(runLoop, [&] {
        QFile::setPermissions(job.s_AV_File_Source, QFile::ReadOwner | QFile::WriteOwner);
        flushToDisk(job.s_AV_File_Source);
        replaced = moveFile(job.s_AV_File_Source, recording.movie, ExistingDestination::Replace);
    });
    if (replaced.outcome != MoveOutcome::Moved) {
        QFile::remove(job.s_AV_File_Source);
        return replaced.error;
    }
    QFile::remove(recording.sound);
    return {};
}

void completeOne(const RescuedRecording& recording, const RescueTools& tools, RunLoop& runLoop,
                 std::vector<RescueNote>& notes)
{
    QString repairError;
    QString soundError;
    runOnWorker(runLoop, [&] {
        repairError = tools.repairMovie(recording.movie);
        if (!recording.sound.isEmpty())
            soundError = repairSoundHeader(recording.sound);
    });
    if (!repairError.isEmpty()) {
        notes.push_back({recording.movie, Text::tr("The recording could not be completed: %1").arg(repairError)});
        if (!recording.sound.isEmpty())
            notes.push_back({recording.sound, Text::tr("This is its sound.")});
        return;
    }
    if (recording.sound.isEmpty()) {
        notes.push_back({recording.movie, Text::tr("The recording was completed.")});
        return;
    }
    const QString joinError = soundError.isEmpty() ? joinInPlace(recording, tools, runLoop) : soundError;
    if (joinError.isEmpty()) {
        notes.push_back({recording.movie, Text::tr("The recording was completed, with its sound.")});
        return;
    }
    notes.push_back(
        {recording.movie,
         Text::tr("The picture was completed, but the sound could not be joined to it: %1").arg(joinError)});
    notes.push_back({recording.sound, Text::tr("This is its sound.")});
}

} // namespace

RescuedRecording putAside(const QString& movie, const QString& sound, const QString& recoveredFolder)
{
    RescuedRecording recording{movie, QFileInfo(sound).isFile() ? sound : QString(), {}};
    const auto move = [&recording](QString& path, const QString& destination) {
        const MoveResult moved = moveFile(path, destination, ExistingDestination::Keep);
        if (moved.outcome == MoveOutcome::Moved)
            path = destination;
        else
            recording.error = moved.error;
        return recording.error.isEmpty();
    };
    // The sound first: a movie that is left without it is found again at the next start, a sound without movie is not.
    if (createFolder(recoveredFolder, recording.error) != FolderCreation::Failed) {
        const QString name =
            pathIn(recoveredFolder, freeBaseName(recoveredFolder, QFileInfo(movie).completeBaseName()));
        if (recording.sound.isEmpty() || move(recording.sound, name + QStringLiteral(".wav")))
            move(recording.movie, name + QStringLiteral(".mov"));
    }
    if (!recording.error.isEmpty() && recording.sound == sound && !sound.isEmpty() && sound != ownSoundPath(movie)) {
        const MoveResult renamed = moveFile(sound, ownSoundPath(movie), ExistingDestination::Keep);
        if (renamed.outcome == MoveOutcome::Moved)
            recording.sound = ownSoundPath(movie);
    }
    return recording;
}

std::vector<RescuedRecording> rescueLeftRecordings(const QString& videoFolder, const QString& recoveredFolder)
{
    QStringList movies;
    const QStringList files = QDir(videoFolder).entryList(QDir::Files | QDir::Hidden | QDir::NoSymLinks, QDir::Name);
    for (const QString& name : files) {
        const QString path = pathIn(videoFolder, name);
        if (isDateStampedMovie(name) && movieHoldsFrames(path))
            movies.append(path);
    }
    const QString latestSound = pathIn(videoFolder, kSoundFileName);
    std::vector<RescuedRecording> recordings;
    for (const QString& movie : movies) {
        QString sound;
        if (soundHoldsSamples(ownSoundPath(movie)))
            sound = ownSoundPath(movie);
        else if (movie == movies.last() && soundHoldsSamples(latestSound))
            sound = latestSound;
        recordings.push_back(putAside(movie, sound, recoveredFolder));
    }
    return recordings;
}

bool allPutAside(const std::vector<RescuedRecording>& recordings)
{
    for (const RescuedRecording& recording : recordings) {
        if (!recording.error.isEmpty())
            return false;
    }
    return true;
}

std::vector<RescueNote> completeRescued(const std::vector<RescuedRecording>& recordings, const RescueTools& tools,
                                        RunLoop& runLoop)
{
    std::vector<RescueNote> notes;
    for (const RescuedRecording& recording : recordings) {
        if (recording.error.isEmpty()) {
            completeOne(recording, tools, runLoop, notes);
            continue;
        }
        notes.push_back({recording.movie, recording.error});
        if (!recording.sound.isEmpty())
            notes.push_back({recording.sound, Text::tr("This is its sound.")});
    }
    return notes;
}

QString rescueMessage(const std::vector<RescueNote>& notes)
{
    if (notes.empty())
        return {};
    QStringList parts{Text::tr("Lumavex was closed while it was recording. This is what could be saved:")};
    for (const RescueNote& note : notes)
        parts.append(note.path + u'\n' + note.whatHappened);
    return parts.join(QStringLiteral("\n\n"));
}

} // namespace lumavex
