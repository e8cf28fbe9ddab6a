// SPDX-License-Identifier: GPL-3.0-or-later
#include "recording/RecordingStatistics.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>
#include <sys/resource.h>

namespace lumavex {

namespace {

double secondsOf(const timeval& time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

/// To the millionth, so that lines stay short.
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
    file_.setFileName(path);
    return file_.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered) ? QString() : problem();
}

QString StatisticsFile::append(const RecordingStatistics& now)
{
    const QByteArray line = statisticsLine(before_, now) + '\n';
    before_ = now;
    if (file_.write(line) == line.size())
        return {};
    const QString why = problem();
    file_.close();
    return why;
}

QString StatisticsFile::problem() const
{
    return QCoreApplication::translate("RecordingStatistics", "The statistics cannot be written to %1: %2.")
        .arg(file_.fileName(), file_.errorString());
}

} // namespace lumavex
