// SPDX-License-Identifier: GPL-3.0-or-later
#include "recording/Rescue.h"

#include "recording/EncoderRun.h"
#include "recording/FileDescriptor.h"
#include "recording/FileMove.h"
#include "recording/RecordedFiles.h"
#include "recording/WorkerRun.h"
#include "recording/WorkingFolders.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <fcntl.h>

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

void flushFile(const QString& path)
{
    const FileDescriptor file(::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC));
    if (file.isOpen())
        ::fsync(file.get());
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
        flushFile(job.s_AV_File_Source);
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
    if (createFolder(recoveredFolder, recording.error) == FolderCreation::Failed)
        return recording;
    const QString name = freeBaseName(recoveredFolder, QFileInfo(movie).completeBaseName());
    const auto move = [&recording, &recoveredFolder](QString& path, const QString& newName) {
        const QString destination = pathIn(recoveredFolder, newName);
        const MoveResult moved = moveFile(path, destination, ExistingDestination::Keep);
        if (moved.outcome == MoveOutcome::Moved)
            path = destination;
        else
            recording.error = moved.error;
    };
    move(recording.movie, name + QStringLiteral(".mov"));
    if (!recording.sound.isEmpty())
        move(recording.sound, name + QStringLiteral(".wav"));
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
    const QString sound = pathIn(videoFolder, kSoundFileName);
    std::vector<RescuedRecording> recordings;
    for (const QString& movie : movies) {
        const bool hasSound = movie == movies.last() && soundHoldsSamples(sound);
        recordings.push_back(putAside(movie, hasSound ? sound : QString(), recoveredFolder));
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
