// SPDX-License-Identifier: GPL-3.0-or-later
#include "recording/MovieContainer.h"

#include "recording/RecordingText.h"

#include <QFile>
#include <QFileInfo>

namespace lumavex {

namespace {

QStringList words(const char* text)
{
    return QString::fromLatin1(text).split(u' ');
}

} // namespace

std::optional<MovieContainer> containerOf(const QString& path)
{
    const QString ending = QFileInfo(path).suffix().toLower();
    if (ending == QLatin1String("mov"))
        return MovieContainer::QuickTime;
    if (ending == QLatin1String("mkv"))
        return MovieContainer::Matroska;
    return ending == QLatin1String("avi") ? std::optional(MovieContainer::Avi) : std::nullopt;
}

bool promisesAnotherKind(const QString& path)
{
    return containerOf(path).value_or(MovieContainer::QuickTime) != MovieContainer::QuickTime;
}

QString copyIntoContainer(const ContainerJob& job, const ChildProcessFactory& createChildProcess, RunLoop& runLoop,
                          const EncoderWatch& watch)
{
    const QStringList copying = words("-map 0 -c copy");
    const QStringList digest = copying + words("-f streamhash -hash crc32 -"); // writes one line per stream with a
                                                                               // checksum of its bytes
    QFile::remove(job.copy);
    EncoderCall call;
    call.sffmpegPath = job.sffmpegPath;
    call.seconds = job.seconds;
    call.written = job.copy;
    call.arguments = QStringList{QStringLiteral("-i"), job.movie} + copying;
    if (containerOf(job.copy) == MovieContainer::Avi) // AVI has a single rate, which the encoder would otherwise double
        call.arguments += {QStringLiteral("-r"), QString::number(job.framesPerSecond)};
    call.arguments += job.copy;
    call.arguments += digest;
    QByteArray recorded;
    EncoderState making;
    if (QString problem = runEncoder(call, making, createChildProcess, runLoop, watch, &recorded); !problem.isEmpty())
        return problem;

    call.arguments = QStringList{QStringLiteral("-i"), job.copy} + digest;
    call.written.clear();
    EncoderWatch reading = watch;
    if (reading.patience)
        *reading.patience *= 10; // no file grows during reading, so progress cannot be observed
    QByteArray copied;
    EncoderState checking;
    if (QString problem = runEncoder(call, checking, createChildProcess, runLoop, reading, &copied); !problem.isEmpty())
        return problem;
    return !recorded.isEmpty() && recorded == copied
               ? QString()
               : RecordingText::tr("The file made of it does not hold what was recorded.");
}

} // namespace lumavex
