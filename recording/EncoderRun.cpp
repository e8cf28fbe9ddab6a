// SPDX-License-Identifier: GPL-3.0-or-later
#include "recording/EncoderRun.h"

#include "recording/EncoderProgress.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QRegularExpression>

namespace lumavex {

namespace {

struct Text {
    Q_DECLARE_TR_FUNCTIONS(EncoderRun)
};

/// The encoder says what is wrong at the end; the rest of a long complaint need not be kept.
constexpr qsizetype kKeptBytes = 4096;
constexpr qsizetype kShownLines = 3;

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
        const QString trimmed = line.trimmed();
        if (!trimmed.isEmpty() && !trimmed.contains(u"time="))
            lines.append(trimmed);
    }
    return lines.mid(qMax(qsizetype{0}, lines.size() - kShownLines)).join(u'\n');
}

QString runEncoder(const EncoderJob& job, const ChildProcessFactory& createChildProcess, RunLoop& runLoop,
                   const std::function<void(float)>& progress)
{
    if (job.sffmpegPath.isEmpty())
        return Text::tr("The encoder ffmpeg, which joins picture and sound, is not installed.");

    bool terminated = false;
    QString failure;
    QByteArray standardError;
    const std::unique_ptr<ChildProcess> encoder = createChildProcess();
    encoder->outData = [](const QByteArray&) {}; // read, so that the encoder cannot block on a full pipe
    encoder->errData = [&](const QByteArray& chunk) {
        standardError = (standardError + chunk).right(kKeptBytes);
        if (const auto seconds = encoderSeconds(chunk); seconds && progress)
            progress(encoderPercentage(static_cast<std::uint64_t>(*seconds), job.i_Orig_Duration_in_Seconds));
    };
    encoder->terminated = [&](const QString& what) {
        failure = what;
        terminated = true;
    };
    encoder->launch(job.sffmpegPath, encoderArguments(job));
    runLoop.runUntil([&terminated] { return terminated; });

    if (!terminated)
        return Text::tr("Joining picture and sound was interrupted.");
    if (failure.isEmpty() && QFileInfo(job.s_AV_File_Source).size() == 0)
        failure = Text::tr("The encoder wrote no file.");
    if (failure.isEmpty())
        return {};
    const QString said = lastLines(standardError);
    return said.isEmpty() ? failure : failure + u'\n' + said;
}

} // namespace lumavex
