// SPDX-License-Identifier: GPL-3.0-or-later
#include "recording/RecordingIncidents.h"

#include "recording/RecordingText.h"

#include <QStringList>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace lumavex {

namespace {

/// Formats as "1 h 2 min", "1 min 13 s" or "9 s".
QString durationText(double seconds)
{
    const auto whole = static_cast<std::int64_t>(std::max(1.0, std::round(seconds)));
    QStringList parts;
    if (whole >= 3600)
        parts += RecordingText::tr("%1 h").arg(whole / 3600);
    if (whole / 60 % 60 > 0)
        parts += RecordingText::tr("%1 min").arg(whole / 60 % 60);
    if (whole < 3600 && whole % 60 > 0)
        parts += RecordingText::tr("%1 s").arg(whole % 60);
    return parts.join(u' ');
}

/// Formats as "1:02:03" or "0:42".
QString timeText(double seconds)
{
    const auto whole = static_cast<int>(std::floor(seconds + 1e-6)); // sums of frame durations fall slightly short
    return whole < 3600 ? QString::asprintf("%d:%02d", whole / 60, whole % 60)
                        : QString::asprintf("%d:%02d:%02d", whole / 3600, whole / 60 % 60, whole % 60);
}

} // namespace

void RecordingIncidents::clear()
{
    for (std::vector<Gap>& gaps : gaps_)
        gaps.clear();
}

void RecordingIncidents::begin(Kind kind, double at)
{
    if (!isOpen(kind))
        gapsOf(kind).push_back({std::max(0.0, at)});
}

void RecordingIncidents::end(Kind kind, double at)
{
    if (isOpen(kind))
        gapsOf(kind).back().end = std::max(at, gapsOf(kind).back().begin);
}

bool RecordingIncidents::isOpen(Kind kind) const
{
    const std::vector<Gap>& gaps = gapsOf(kind);
    return !gaps.empty() && gaps.back().end < gaps.back().begin;
}

QString RecordingIncidents::summaryOf(Kind kind, double length) const
{
    std::vector<Gap> gaps = gapsOf(kind);
    const bool toTheEnd = isOpen(kind);
    if (toTheEnd)
        gaps.back().end = length;
    std::erase_if(gaps, [](const Gap& gap) { return gap.end <= gap.begin; });
    if (gaps.empty())
        return {};
    double total = 0;
    for (const Gap& gap : gaps)
        total += gap.end - gap.begin;
    const QString what = kind == Kind::SoundLost    ? RecordingText::tr("%1 without sound")
                         : kind == Kind::Silence    ? RecordingText::tr("Nothing heard for %1")
                         : kind == Kind::CameraGone ? RecordingText::tr("Camera gone for %1")
                                                    : RecordingText::tr("Region outside the screen, and black, for %1");
    const QString from = timeText(gaps.front().begin);
    const QString where = gaps.size() > 1
                              ? RecordingText::tr("in %1 gaps, the first from %2 on").arg(gaps.size()).arg(from)
                          : !toTheEnd           ? RecordingText::tr("from %1 on").arg(from)
                          : from == timeText(0) ? RecordingText::tr("from the beginning to the end")
                                                : RecordingText::tr("from %1 to the end").arg(from);
    return what.arg(durationText(total)) + u' ' + where + u'.';
}

QString RecordingIncidents::summary(double length) const
{
    QStringList sentences;
    for (const Kind kind : {Kind::SoundLost, Kind::Silence, Kind::CameraGone, Kind::RegionOutside})
        sentences += summaryOf(kind, length);
    sentences.removeAll(QString());
    return sentences.join(u' ');
}

} // namespace lumavex
