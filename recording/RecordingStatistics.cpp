// SPDX-License-Identifier: GPL-3.0-or-later
#include "recording/RecordingStatistics.h"

#include "recording/RecordingText.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace lumavex {

namespace {

double secondsOf(const timeval& time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

/// Rounds to millionths, which keeps lines short.
double rounded(double figure)
{
    return std::round(figure * 1e6) / 1e6;
}

} // namespace

ProcessorTime processorTimeOfProcess()
{
    rusage used{};
    getrusage(RUSAGE_SELF, &used);
    return {secondsOf(used.ru_utime), secondsOf(used.ru_stime)};
}

QByteArray statisticsLine(const RecordingStatistics& before, const RecordingStatistics& now)
{
    const auto count = [](std::int64_t earlier, std::int64_t later) { return static_cast<qint64>(later - earlier); };
    const std::int64_t pictures = now.movie.encoded + now.movie.spliced - before.movie.encoded - before.movie.spliced;
    const std::int64_t frames = pictures + now.movie.repeated - before.movie.repeated;
    const QJsonObject line{
        {QStringLiteral("time"), rounded(now.time)},
        {QStringLiteral("composed"), count(before.frames.composed, now.frames.composed)},
        {QStringLiteral("encoded"), count(before.movie.encoded, now.movie.encoded)},
        {QStringLiteral("spliced"), count(before.movie.spliced, now.movie.spliced)},
        {QStringLiteral("repeated"), count(before.movie.repeated, now.movie.repeated)},
        {QStringLiteral("new"), frames > 0 ? QJsonValue(rounded(double(pictures) / double(frames))) : QJsonValue()},
        {QStringLiteral("late"), count(before.frames.late, now.frames.late)},
        {QStringLiteral("lateness"), rounded(std::chrono::duration<double>(now.frames.lateness).count())},
        {QStringLiteral("queue"), static_cast<qint64>(now.movie.queued)},
        {QStringLiteral("bytes"), count(before.movie.bytes, now.movie.bytes)},
        {QStringLiteral("user"), rounded(now.processor.user - before.processor.user)},
        {QStringLiteral("system"), rounded(now.processor.system - before.processor.system)},
        {QStringLiteral("skew"), now.skew ? QJsonValue(rounded(*now.skew)) : QJsonValue()},
    };
    return QJsonDocument(line).toJson(QJsonDocument::Compact);
}

QString StatisticsFile::open(const QString& path)
{
    path_ = path;
    const QByteArray name = QFile::encodeName(path);
    struct stat status = {};
    if (::stat(name.constData(), &status) == 0 && S_ISFIFO(status.st_mode)) {
        if (::access(name.constData(), W_OK) != 0)
            return problem(errno);
        writer_ = std::make_unique<LineWriter>(
            [name] { return FileDescriptor(::open(name.constData(), O_WRONLY | O_CLOEXEC)); }); // awaits a reader
        return {};
    }
    FileDescriptor file(::open(name.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_NOCTTY | O_CLOEXEC, 0666));
    if (!file.isOpen())
        return problem(errno);
    writer_ = std::make_unique<LineWriter>(std::move(file));
    return {};
}

void StatisticsFile::begin(const RecordingStatistics& now)
{
    before_ = now;
    untoldLateness_ = Nanoseconds(0);
}

QString StatisticsFile::append(const RecordingStatistics& now, Line line)
{
    constexpr std::chrono::seconds patience{1};
    RecordingStatistics told = now;
    told.frames.lateness = std::max(now.frames.lateness, untoldLateness_);
    const QByteArray text = statisticsLine(before_, told) + '\n';
    if (writer_->add(text.toStdString(), line == Line::Last ? LineWriter::Room::Always : LineWriter::Room::Bounded))
        begin(now);
    else
        untoldLateness_ = told.frames.lateness;
    if (line == Line::Last)
        writer_->waitUntilIdle(patience);
    const std::error_code error = writer_->error();
    if (!error)
        return {};
    writer_.reset();
    return problem(error.value());
}

QString StatisticsFile::problem(int error) const
{
    return RecordingText::tr("The statistics cannot be written to %1: %2.").arg(path_, qt_error_string(error));
}

} // namespace lumavex
