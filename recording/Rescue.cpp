// SPDX-License-Identifier: GPL-3.0-or-later
#include "recording/Rescue.h"

#include "recording/FileMove.h"
#include "recording/RecordedFiles.h"
#include "recording/RecordingText.h"
#include "recording/SavedMovie.h"
#include "recording/WorkerRun.h"
#include "recording/WorkingFolders.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

namespace lumavex {

namespace {

constexpr QLatin1StringView kMarkSuffix{".pending"};
constexpr qint64 kMostAttempts = 2;

QString joiningPath(const QString& movie)
{
    const QFileInfo about(movie);
    return pathIn(about.absolutePath(), u'.' + about.completeBaseName() + QStringLiteral(".joining.mov"));
}

/// Path of a movie's sound under the movie's name.
QString ownSoundPath(const QString& movie)
{
    const QFileInfo about(movie);
    return pathIn(about.absolutePath(), about.completeBaseName() + QStringLiteral(".wav"));
}

/// A hidden file beside a movie of which the user has not been told. It grows by one byte per attempt to complete the
/// movie, which limits the attempts when the program crashes on it.
QString markPath(const QString& movie)
{
    const QFileInfo about(movie);
    return pathIn(about.absolutePath(), u'.' + about.completeBaseName() + kMarkSuffix);
}

void mark(const QString& movie)
{
    QFile file(markPath(movie));
    if (file.open(QIODevice::WriteOnly | QIODevice::NewOnly))
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
}

/// False when the number of attempts is exhausted.
bool beginsAttempt(const QString& movie)
{
    QFile file(markPath(movie));
    if (file.size() >= kMostAttempts)
        return false;
    if (file.open(QIODevice::Append | QIODevice::ExistingOnly))
        file.write(".");
    return true;
}

/// After a rescue that was killed between a sound and its movie: moves the sound back to the movie.
void takeBackSounds(const QString& recoveredFolder, const QStringList& movies)
{
    for (const QString& movie : movies) {
        const QString anyMark = u'.' + QFileInfo(movie).completeBaseName() + u'*' + kMarkSuffix;
        for (const QString& name : QDir(recoveredFolder).entryList({anyMark}, QDir::Files | QDir::Hidden)) {
            const QString unmoved =
                pathIn(recoveredFolder, name.mid(1).chopped(kMarkSuffix.size()) + QStringLiteral(".mov"));
            if (!QFileInfo::exists(unmoved) && soundHoldsSamples(ownSoundPath(unmoved)))
                moveFile(ownSoundPath(unmoved), ownSoundPath(movie), ExistingDestination::Keep);
        }
    }
}

/// Recordings that earlier runs put aside but did not report.
std::vector<RescuedRecording> markedRecordings(const QString& recoveredFolder)
{
    std::vector<RescuedRecording> recordings;
    const QStringList marks =
        QDir(recoveredFolder)
            .entryList({u'*' + kMarkSuffix}, QDir::Files | QDir::Hidden | QDir::NoSymLinks, QDir::Name);
    for (const QString& name : marks) {
        const QString movie = pathIn(recoveredFolder, name.mid(1).chopped(kMarkSuffix.size()) + QStringLiteral(".mov"));
        if (!QFileInfo(movie).isFile() || QFileInfo(movie).isSymLink()) {
            QFile::remove(pathIn(recoveredFolder, name));
            continue;
        }
        recordings.push_back({movie, soundHoldsSamples(ownSoundPath(movie)) ? ownSoundPath(movie) : QString(), {}});
    }
    return recordings;
}

/// True when an earlier run completed the recording; only the sound file may remain.
bool isComplete(const RescuedRecording& recording, const RescueTools& tools)
{
    const MovieFacts facts = tools.readMovie(recording.movie);
    const std::int64_t frames = facts.picture.value_or(MovieFacts::Track()).samples;
    const std::optional<double> sound = recording.sound.isEmpty() ? std::nullopt : soundSeconds(recording.sound);
    return whatIsMissing(facts, {frames, {}, sound}).isEmpty();
}

/// A name without extension that no movie or sound file in the folder has.
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

/// Joins into a hidden file that then replaces the movie. Returns an empty text, or the reason why the two files
/// remain.
QString joinInPlace(const RescuedRecording& recording, const RescueTools& tools, RunLoop& runLoop)
{
    const double length = soundSeconds(recording.sound).value_or(0);
    const EncoderJob job{tools.sffmpegPath, recording.movie, recording.sound, joiningPath(recording.movie),
                         static_cast<std::uint64_t>(length)};
    EncoderState encoder;
    QString failure = runEncoder(job, encoder, tools.createChildProcess, runLoop, tools.watch);
    if (failure.isEmpty())
        runOnWorker(runLoop, [&] {
            const MovieFacts::Track picture = tools.readMovie(recording.movie).picture.value_or(MovieFacts::Track());
            failure = whatIsMissing(tools.readMovie(job.s_AV_File_Source), {picture.samples, picture.seconds, length});
        });
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

void noteSound(const RescuedRecording& recording, std::vector<RescueNote>& notes)
{
    if (!recording.sound.isEmpty())
        notes.push_back({recording.sound, RecordingText::tr("This is its sound.")});
}

void completeOne(const RescuedRecording& recording, const RescueTools& tools, RunLoop& runLoop,
                 std::vector<RescueNote>& notes)
{
    const auto note = [&](const QString& whatHappened) { notes.push_back({recording.movie, whatHappened}); };
    if (!beginsAttempt(recording.movie)) {
        note(RecordingText::tr("It could not be completed and is as it was left."));
        noteSound(recording, notes);
        return;
    }
    QString repairError;
    QString soundError;
    bool complete = false;
    runOnWorker(runLoop, [&] {
        complete = isComplete(recording, tools);
        if (complete)
            return;
        repairError = tools.repairMovie(recording.movie);
        if (!recording.sound.isEmpty())
            soundError = repairSoundHeader(recording.sound);
    });
    if (complete) {
        if (!recording.sound.isEmpty())
            QFile::remove(recording.sound);
        note(RecordingText::tr("The recording was completed."));
        return;
    }
    if (!repairError.isEmpty()) {
        note(RecordingText::tr("The recording could not be completed: %1").arg(repairError));
        noteSound(recording, notes);
        return;
    }
    if (recording.sound.isEmpty()) {
        note(RecordingText::tr("The recording was completed."));
        return;
    }
    const QString joinError = soundError.isEmpty() ? joinInPlace(recording, tools, runLoop) : soundError;
    if (joinError.isEmpty()) {
        note(RecordingText::tr("The recording was completed, with its sound."));
        return;
    }
    note(RecordingText::tr("The picture was completed, but the sound could not be joined to it: %1").arg(joinError));
    noteSound(recording, notes);
}

/// Called before a recording's files are moved.
using BeforeMove = void (*)(const QString& movie);

RescuedRecording move(const QString& movie, const QString& sound, const QString& recoveredFolder, BeforeMove beforeMove)
{
    RescuedRecording recording{movie, QFileInfo(sound).isFile() ? sound : QString(), {}};
    const auto moveTo = [&recording](QString& path, const QString& destination) {
        const MoveResult moved = moveFile(path, destination, ExistingDestination::Keep);
        if (moved.outcome == MoveOutcome::Moved)
            path = destination;
        else
            recording.error = moved.error;
        return recording.error.isEmpty();
    };
    // The sound first: the next start finds a movie without its sound, but not a sound without its movie.
    if (createFolder(recoveredFolder, recording.error) != FolderCreation::Failed) {
        const QString name =
            pathIn(recoveredFolder, freeBaseName(recoveredFolder, QFileInfo(movie).completeBaseName()));
        beforeMove(name + QStringLiteral(".mov"));
        if (recording.sound.isEmpty() || moveTo(recording.sound, name + QStringLiteral(".wav")))
            moveTo(recording.movie, name + QStringLiteral(".mov"));
    }
    if (!recording.error.isEmpty() && recording.sound == sound && !sound.isEmpty() && sound != ownSoundPath(movie)) {
        const MoveResult renamed = moveFile(sound, ownSoundPath(movie), ExistingDestination::Keep);
        if (renamed.outcome == MoveOutcome::Moved)
            recording.sound = ownSoundPath(movie);
    }
    return recording;
}

} // namespace

RescuedRecording putAside(const QString& movie, const QString& sound, const QString& recoveredFolder)
{
    return move(movie, sound, recoveredFolder, [](const QString&) {});
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
    takeBackSounds(recoveredFolder, movies);
    std::vector<RescuedRecording> recordings = markedRecordings(recoveredFolder);
    const QString latestSound = pathIn(videoFolder, kSoundFileName);
    for (const QString& movie : movies) {
        QString sound;
        if (soundHoldsSamples(ownSoundPath(movie)))
            sound = ownSoundPath(movie);
        else if (movie == movies.last() && soundHoldsSamples(latestSound))
            sound = latestSound;
        recordings.push_back(move(movie, sound, recoveredFolder, mark));
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
        noteSound(recording, notes);
    }
    return notes;
}

void forgetRescued(const std::vector<RescuedRecording>& recordings)
{
    for (const RescuedRecording& recording : recordings)
        QFile::remove(markPath(recording.movie));
}

QString whereItIs(const RescuedRecording& kept)
{
    const QString files =
        kept.sound.isEmpty()
            ? RecordingText::tr("The recording was kept as %1.").arg(kept.movie)
            : RecordingText::tr("Picture and sound were kept as %1 and %2.").arg(kept.movie, kept.sound);
    return (kept.error + u' ' + files).trimmed();
}

QString rescueMessage(const std::vector<RescueNote>& notes)
{
    if (notes.empty())
        return {};
    QStringList parts{RecordingText::tr("Lumavex was closed while it was recording. This is what could be saved:")};
    for (const RescueNote& note : notes)
        parts.append(note.path + u'\n' + note.whatHappened);
    return parts.join(QStringLiteral("\n\n"));
}

} // namespace lumavex
