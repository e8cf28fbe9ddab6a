// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"

#include "app/Window_Main.h"

#include <cmath>

namespace lumavex {

QString AppDelegate::openStatistics()
{
    return options_.stats.isEmpty() ? QString() : recording.statisticsFile.open(options_.stats);
}

RecordingStatistics AppDelegate::statistics() const
{
    RecordingStatistics now;
    now.time = recording.movieSeconds();
    now.frames = recording.frameCounts;
    now.movie = recording.assetWriter->statistics();
    now.processor = processorTimeOfProcess();
    if (recording.soundRecorder && !recording.isEnding()) { // at the end no further frame is due
        // The sound file contains exactly the samples of the recording time, so the expected sound time at the next
        // frame's deadline is the time recorded until then.
        const Nanoseconds sinceResumed =
            recording.m_RecordStatus == Paused
                ? recording.refreshRemainder
                : platform_.runLoop->nextDeadline(compose.timerViewRefresh) - recording.notBefore;
        now.skew = CMTimeGetSeconds(recording.m_Current_Video_Frame)
                   - std::chrono::duration<double>(recording.recordedBefore + sinceResumed).count();
    }
    return now;
}

void AppDelegate::beginStatistics()
{
    recording.frameCounts = {};
    recording.shortageTold = false;
    recording.recordedBefore = Nanoseconds(0);
    recording.statisticsFile.begin(statistics());
}

void AppDelegate::writeStatistics()
{
    if (!recording.statisticsFile.isOpen())
        return;
    const auto line = recording.isEnding() ? StatisticsFile::Line::Last : StatisticsFile::Line::Ordinary;
    if (const QString problem = recording.statisticsFile.append(statistics(), line); !problem.isEmpty())
        tell(MessageTopic::General, {problem});
    recording.frameCounts.lateness = Nanoseconds(0);
}

QString AppDelegate::pictureShortage() const
{
    const FrameCounts& counts = recording.frameCounts;
    if (counts.shortSeconds < 2) // a single short second, common at the start, is a hiccup that no advice can prevent
        return {};
    QStringList help;
    if (recording.i_fps_of_Recording > 1)
        help += tr("a lower rate");
    help += tr("a smaller size");
    if (isPreviewInSight())
        help += tr("a hidden preview");
    if (capture.isComposite() && capture.i_Type_Screen_Capture != WindowExclusive)
        help += tr("Lumavex's own windows left in the picture");
    const QString what =
        recording.m_RecordStatus == Recording
            ? tr("The machine does not keep up: %1 of %2 frames in the last second show a new picture.")
                  .arg(counts.latestShortSecond.composed)
                  .arg(counts.latestShortSecond.frames)
            : tr("The machine did not keep up: in %1 of %2 seconds fewer than half of the frames show a new picture.")
                  .arg(counts.shortSeconds)
                  .arg(std::ceil(CMTimeGetSeconds(recording.m_Current_Video_Frame)));
    return what + u' ' + tr("What helps: %1.").arg(help.join(QStringLiteral(", ")));
}

} // namespace lumavex
