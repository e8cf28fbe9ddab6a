// SPDX-License-Identifier: GPL-3.0-or-later
#include "recording/EncoderRun.h"

#include "recording/EncoderProgress.h"
#include "recording/RecordingText.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>

#include <algorithm>
#include <sys/stat.h>

namespace lumavex {

namespace {

/// The encoder reports its error last, so only the end of a long output is kept.
constexpr qsizetype kKeptBytes = 4096;
constexpr qsizetype kShownLines = 3;
constexpr qsizetype kShownCharacters = 200;

QString printable(QString line)
{
    std::replace_if(
        line.begin(), line.end(), [](QChar c) { return !c.isPrint() || c == QChar::ReplacementCharacter; }, u' ');
    line = line.simplified();
    return line.size() > kShownCharacters ? line.left(kShownCharacters) + u'…' : line;
}

/// Detects that the joined file has not grown for too long.
class Watchdog {
public:
    Watchdog(RunLoop& runLoop, const QString& path, std::optional<std::chrono::seconds> patience)
        : runLoop_(runLoop), path_(path), patience_(patience), grown_(runLoop.now())
    {
        if (patience_)
            timer_ = runLoop_.scheduleRepeating({1, 1}, RunLoopMode::Common, [this](const TimerFiring&) { look(); });
    }
    ~Watchdog() { runLoop_.invalidate(timer_); }
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

    bool hasLostPatience() const { return lost_; }

private:
    void look()
    {
        const std::int64_t size = QFileInfo(path_).size();
        if (size != size_)
            grown_ = runLoop_.now();
        size_ = size;
        lost_ = lost_ || runLoop_.now() - grown_ >= *patience_;
    }

    RunLoop& runLoop_;
    const QString path_;
    const std::optional<std::chrono::seconds> patience_;
    TimerId timer_ = 0;
    std::int64_t size_ = 0;
    Nanoseconds grown_;
    bool lost_ = false;
};

} // namespace

QStringList encoderArguments(const EncoderJob& job)
{
    return {QStringLiteral("-i"), job.s_Video_File_Source, QStringLiteral("-i"), job.s_Sound_File_Source,
            QStringLiteral("-c"), QStringLiteral("copy"),  job.s_AV_File_Source};
}

QString lastLines(const QByteArray& standardError)
{
    static const QRegularExpression lineEnd(QStringLiteral("[\r\n]+"));
    QStringList lines;
    for (const QString& line : QString::fromUtf8(standardError).split(lineEnd)) {
        const QString shown = printable(line);
        if (!shown.isEmpty() && !line.contains(u"time="))
            lines.append(shown);
    }
    return lines.mid(qMax(qsizetype{0}, lines.size() - kShownLines)).join(u'\n');
}

QString runEncoder(const EncoderJob& job, EncoderState& state, const ChildProcessFactory& createChildProcess,
                   RunLoop& runLoop, const EncoderWatch& watch)
{
    QFile::remove(job.s_AV_File_Source); // the encoder refuses to overwrite, but would follow a dangling link
    return runEncoder({job.sffmpegPath, encoderArguments(job), job.s_AV_File_Source, job.i_Orig_Duration_in_Seconds},
                      state, createChildProcess, runLoop, watch);
}

QString runEncoder(const EncoderCall& call, EncoderState& state, const ChildProcessFactory& createChildProcess,
                   RunLoop& runLoop, const EncoderWatch& watch, QByteArray* standardOutput)
{
    if (call.sffmpegPath.isEmpty())
        return RecordingText::tr("The encoder ffmpeg, which joins picture and sound, is not installed.");

    QString failure;
    QByteArray standardError;
    const std::unique_ptr<ChildProcess> encoder = createChildProcess();
    encoder->outData = [standardOutput](const QByteArray& chunk) { // the output is read, so that the encoder cannot
                                                                   // block on a full pipe
        if (standardOutput)
            *standardOutput += chunk;
    };
    encoder->errData = [&](const QByteArray& chunk) {
        standardError = (standardError + chunk.right(kKeptBytes)).right(kKeptBytes);
        const bool joining = state.u_Type_Progress == JoiningProgress;
        if (const auto seconds = joining ? encoderSeconds(chunk) : std::nullopt; seconds && watch.progress)
            watch.progress(encoderPercentage(static_cast<std::uint64_t>(*seconds), call.seconds));
    };
    encoder->terminated = [&](const QString& what) {
        failure = what;
        state.terminated = true;
    };
    const Watchdog watchdog(runLoop, call.written, watch.patience);
    const auto isCancelled = [&watch] { return watch.isCancelled && watch.isCancelled(); };
    encoder->launch(call.sffmpegPath, call.arguments);
    runLoop.runUntil([&] { return state.terminated || isCancelled() || watchdog.hasLostPatience(); });

    // A running encoder is killed when its handle is destroyed: it may no longer respond.
    if (!state.terminated)
        return isCancelled() ? RecordingText::tr("Joining was cancelled.")
                             : RecordingText::tr("The encoder did not get any further for %1 seconds and was ended.")
                                   .arg(watch.patience.value_or(std::chrono::seconds(0)).count());
    if (failure.isEmpty() && !call.written.isEmpty() && QFileInfo(call.written).size() == 0)
        failure = RecordingText::tr("The encoder wrote no file.");
    if (failure.isEmpty())
        return {};
    const QString said = lastLines(standardError);
    return said.isEmpty() ? failure : failure + u'\n' + said;
}

QString joinWithoutEvents(const EncoderJob& job)
{
    constexpr int patience = 600'000; // milliseconds
    QFile::remove(job.s_AV_File_Source);
    QProcess encoder;
    encoder.setStandardInputFile(QProcess::nullDevice());
    encoder.setStandardOutputFile(QProcess::nullDevice());
    encoder.setStandardErrorFile(QProcess::nullDevice());
    encoder.setChildProcessModifier([] { ::umask(077); });
    encoder.start(job.sffmpegPath, encoderArguments(job));
    if (encoder.waitForFinished(patience) && encoder.exitStatus() == QProcess::NormalExit && encoder.exitCode() == 0)
        return {};
    return RecordingText::tr("The encoder failed.");
}

} // namespace lumavex
