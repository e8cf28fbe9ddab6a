// SPDX-License-Identifier: GPL-3.0-or-later
#include "recording/RecordingEnd.h"

#include "recording/RecordingText.h"

#include <QFile>
#include <QFileInfo>
#include <QObject>
#include <QStringList>
#include <QUrl>

#include <utility>

namespace lumavex {

namespace {

QString joined(const QString& first, const QString& second)
{
    return (first + u' ' + second).trimmed();
}

} // namespace

Kept RecordingOutcome::kept() const
{
    switch (ending) {
    case Ending::Nothing:
    case Ending::Discarded:
        return Kept::Nothing;
    case Ending::Saved:
    case Ending::SavedUntidied:
        return problem.isEmpty() ? Kept::AsAsked : Kept::Otherwise;
    default:
        return Kept::Otherwise;
    }
}

QString RecordingOutcome::savedPath() const
{
    const bool isSaved = ending == Ending::Saved || ending == Ending::SavedUntidied || ending == Ending::SavedApart;
    return isSaved ? path : QString();
}

RecordingEnd::RecordingEnd(StoppedRecording recording, EndServices services)
    : recording_(std::move(recording)), services_(std::move(services))
{
}

EncoderWatch RecordingEnd::watch(std::function<void(float)> progress) const
{
    return {std::move(progress), [this] { return cancelled_.load(); }, services().patience};
}

void RecordingEnd::join(const RecordedLengths& lengths)
{
    lengths_ = lengths;
    if (hasSound()) {
        services().setProgress(0);
        services().beginProgress();
        joinProblem_ = services().join(recording_.files, watch(services().setProgress));
        if (joinProblem_.isEmpty())
            joinProblem_ = whatIsMissingFrom(recording_.files.s_AV_File_Source);
    }
    services().endProgress();
}

RecordingOutcome RecordingEnd::save(const QString& problem)
{
    problem_ = problem;
    movie_ = hasSound() ? recording_.files.s_AV_File_Source : recording_.files.s_Video_File_Source;
    RecordingOutcome outcome = joinProblem_.isEmpty() ? saveMovie() : keepApart();
    // Tidies first: if the program ended while the alert is open, the next start would rescue the working files.
    tidy(outcome);
    if (!outcome.savedPath().isEmpty())
        tellSaved(outcome.path);
    return outcome;
}

RecordingOutcome RecordingEnd::endWithoutScreen(const RecordedLengths& lengths, const QString& problem,
                                                EndServices services)
{
    const QString& picture = recording_.files.s_Video_File_Source;
    if (lengths.frames == 0)
        return {};
    if (services_.answers == EndServices::Answers::ByUser)
        return {Ending::LeftForNextStart, picture, problem};
    withoutScreen_.emplace(std::move(services));
    if (!moveResult_.valid()) {
        // An encoder started earlier may still be writing the usual file.
        const QString usual = std::exchange(recording_.files.s_AV_File_Source, picture + QStringLiteral(".joined.mov"));
        join(lengths);
        QFile::remove(usual);
    }
    return save(problem);
}

RecordingOutcome RecordingEnd::saveMovie()
{
    SavePanel panel;
    panel.title = QStringLiteral("Select a folder to save the video file recorded");
    panel.nameField = QFileInfo(recording_.files.s_Video_File_Source).fileName();
    panel.filter = RecordingText::tr("Movies (*.mov)");
    panel.ending = QStringLiteral("mov");
    std::optional<RecordingOutcome> outcome;
    if (moveResult_.valid()) // started before the screen was lost, on a thread that needs no screen
        outcome = judge(moveResult_.get());
    while (!outcome) {
        const std::optional<QString> path = services().dialogs.runSavePanel(panel);
        outcome = path ? judge(moveTo(*path)) : discarded();
    }
    return *outcome;
}

MoveResult RecordingEnd::moveTo(const QString& wanted)
{
    moving_ = movie_;
    wanted_ = savedAs_ = wanted;
    if (isInWorkingFolder(wanted, recording_.folders))
        return {MoveOutcome::Failed, RecordingText::tr("Lumavex empties this folder at every start.")};
    const bool otherKind = services().answers == EndServices::Answers::ByProgram && promisesAnotherKind(wanted);
    if (otherKind && services().convert) {
        moving_ = pathIn(recording_.folders.s_Video_Folder, QStringLiteral("finalvideo.") + QFileInfo(wanted).suffix());
        const EncoderJob& files = recording_.files;
        const QString obstacle = services().convert(
            {files.sffmpegPath, movie_, moving_, recording_.framesPerSecond, files.i_Orig_Duration_in_Seconds},
            watch({}));
        if (!obstacle.isEmpty())
            return {MoveOutcome::Failed, obstacle};
    } else if (otherKind) {
        savedAs_ += QStringLiteral(".mov");
    }
    return moveWithProgress();
}

MoveResult RecordingEnd::moveWithProgress()
{
    QObject sheet; // receives the progress; queued progress is dropped with it and cannot reopen the sheet
    std::atomic<int> percentage{-1};
    bool shown = false;
    const auto copied = [this, &sheet, &percentage, &shown](std::int64_t done, std::int64_t total) {
        const int now = total > 0 ? static_cast<int>(done * 100 / total) : 0;
        if (percentage.exchange(now) != now)
            QMetaObject::invokeMethod(
                &sheet,
                [this, now, &shown] {
                    if (!std::exchange(shown, true))
                        services().beginProgress();
                    services().setProgress(static_cast<float>(now));
                },
                Qt::QueuedConnection);
        return !cancelled_;
    };
    if (services().answers == EndServices::Answers::ByUser)
        cancelled_ = false; // the user chose this path after any earlier cancellation
    std::promise<MoveResult> outcome;
    moveResult_ = outcome.get_future().share();
    services().run([&] {
        flushToDisk(moving_); // written by another program, and soon the only copy
        const MoveResult result = moveFile(moving_, savedAs_, ExistingDestination::Replace, copied);
        if (result.outcome == MoveOutcome::Moved)
            giveOrdinaryMode(savedAs_);
        outcome.set_value(result);
    });
    services().endProgress();
    return moveResult_.get();
}

std::optional<RecordingOutcome> RecordingEnd::judge(MoveResult moved)
{
    if (moved.outcome == MoveOutcome::Moved) {
        const bool converted = moving_ != movie_; // it was compared with the movie when it was made
        if (converted)
            QFile::remove(movie_);
        const QString missing = converted ? QString() : whatIsMissingFrom(savedAs_);
        return missing.isEmpty() ? saved() : savedIncomplete(missing);
    }
    moveResult_ = {};
    const QString why =
        moved.outcome == MoveOutcome::Cancelled ? RecordingText::tr("Saving was cancelled.") : moved.error;
    const int answer = services().dialogs.runAlert(
        {RecordingText::tr("Error"),
         RecordingText::tr(
             "The movie could not be saved there. %1 It is not lost: save it elsewhere or under another name, or "
             "close this and it is kept in %2.")
             .arg(why, recording_.folders.s_Recovered_Folder),
         {RecordingText::tr("Save Elsewhere…"), RecordingText::tr("Close")},
         Alert::Reader::User});
    return answer == 0 ? std::nullopt : std::optional(keepWhole(why));
}

RecordingOutcome RecordingEnd::saved()
{
    if (savedAs_ != wanted_)
        problem_ =
            joined(problem_, RecordingText::tr("Without the screen it could only be saved as %1.").arg(savedAs_));
    return {Ending::Saved, savedAs_, problem_};
}

RecordingOutcome RecordingEnd::savedIncomplete(const QString& missing)
{
    RecordingOutcome outcome{Ending::SavedIncomplete, savedAs_,
                             RecordingText::tr("The movie saved as %1 is not what was recorded. %2")
                                 .arg(savedAs_, joined(missing, problem_))};
    QString shown = savedAs_;
    // Without sound, the moved file is the whole recording.
    const EncoderJob& files = recording_.files;
    if (QFileInfo::exists(files.s_Video_File_Source)) {
        const RescuedRecording kept =
            putAside(files.s_Video_File_Source, files.s_Sound_File_Source, recording_.folders.s_Recovered_Folder);
        if (!kept.error.isEmpty())
            outcome.ending = Ending::KeptInPlace;
        outcome.problem += u' ' + whereItIs(kept);
        shown = kept.movie;
    }
    tellKept(outcome.problem, shown);
    return outcome;
}

RecordingOutcome RecordingEnd::discarded() const
{
    return {Ending::Discarded, hasSound() ? movie_ : QString(), problem_};
}

RecordingOutcome RecordingEnd::keepWhole(const QString& why)
{
    RescuedRecording kept{movie_, {}, {}};
    if (isInWorkingFolder(movie_, recording_.folders)) {
        // The joined movie replaces the picture file and gets its stamped name, by which the next start finds it if it
        // has to stay.
        const QString& picture = recording_.files.s_Video_File_Source;
        const bool stamped =
            movie_ == picture || moveFile(movie_, picture, ExistingDestination::Replace).outcome == MoveOutcome::Moved;
        kept = putAside(stamped ? picture : movie_, {}, recording_.folders.s_Recovered_Folder);
    }
    const QString where = whereItIs(kept);
    tellKept(where, kept.movie);
    return {kept.error.isEmpty() ? Ending::KeptWhole : Ending::KeptInPlace, kept.movie,
            joined(problem_, why) + u' ' + where};
}

RecordingOutcome RecordingEnd::keepApart()
{
    const EncoderJob& files = recording_.files;
    const RescuedRecording kept =
        putAside(files.s_Video_File_Source, files.s_Sound_File_Source, recording_.folders.s_Recovered_Folder);
    problem_ = RecordingText::tr("Sound and picture could not be joined. %1\n\n%2")
                   .arg(joined(joinProblem_, problem_), whereItIs(kept));
    // A picture moved out of the video folder would leave the sound behind, which the next start does not find alone.
    const bool inPlace = !kept.error.isEmpty();
    QStringList buttons{RecordingText::tr("Save Video Without Sound"), RecordingText::tr("Close")};
    if (inPlace)
        buttons.removeFirst();
    const int answer =
        services().dialogs.runAlert({RecordingText::tr("Error"), problem_, buttons, Alert::Reader::User});
    QFile::remove(files.s_AV_File_Source); // left by a failed encoder
    const RecordingOutcome apart{inPlace ? Ending::KeptInPlace : Ending::KeptApart, kept.movie, problem_};
    if (inPlace || answer != 0)
        return apart;

    lengths_.soundSeconds.reset();
    movie_ = kept.movie;
    RecordingOutcome outcome = saveMovie();
    if (outcome.ending == Ending::Discarded)
        return apart;
    if (outcome.ending == Ending::Saved)
        outcome.ending = Ending::SavedApart;
    else if (outcome.ending == Ending::KeptWhole)
        outcome.ending = Ending::KeptApart;
    return outcome;
}

void RecordingEnd::tidy(RecordingOutcome& outcome) const
{
    if (outcome.ending == Ending::KeptInPlace)
        return;
    for (const QString& file : {recording_.files.s_Video_File_Source, recording_.files.s_Sound_File_Source}) {
        QFile::remove(file);
        if (!QFileInfo::exists(file))
            continue;
        qWarning("%s", qUtf8Printable(RecordingText::tr("%1 could not be removed.").arg(file)));
        if (outcome.ending == Ending::Saved)
            outcome.ending = Ending::SavedUntidied;
    }
}

QString RecordingEnd::whatIsMissingFrom(const QString& movie)
{
    MovieFacts facts;
    // The other thread uses no data that endWithoutScreen changes.
    services().run([&facts, &read = services().readMovie, movie] { facts = read(movie); });
    return whatIsMissing(facts, lengths_);
}

void RecordingEnd::tellSaved(const QString& path)
{
    const int answer = services().dialogs.runAlert({QStringLiteral("Success"),
                                                    QStringLiteral("Video file saved successfully."),
                                                    {QStringLiteral("Play Video File"), QStringLiteral("Close")},
                                                    Alert::Reader::User});
    if (answer == 0 && !services().dialogs.open(QUrl::fromLocalFile(path)))
        services().showMessage(RecordingText::tr("No application is installed that opens %1.").arg(path));
}

void RecordingEnd::tellKept(const QString& text, const QString& path)
{
    const QString trouble =
        tellWithFolder(services().dialogs, {RecordingText::tr("Error"), text, {}, Alert::Reader::User}, path);
    if (!trouble.isEmpty())
        services().showMessage(trouble);
}

QString tellWithFolder(Dialogs& dialogs, Alert alert, const QString& path)
{
    const QString folder = QFileInfo(path).absolutePath();
    alert.buttons = QStringList{RecordingText::tr("Show in Folder"), RecordingText::tr("Close")};
    if (dialogs.runAlert(alert) != 0 || dialogs.open(QUrl::fromLocalFile(folder)))
        return {};
    return RecordingText::tr("No application is installed that shows folders. The folder is %1.").arg(folder);
}

} // namespace lumavex
