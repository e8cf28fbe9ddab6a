// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"

namespace lumavex {

QString AppDelegate::openStatistics()
{
    return options_.stats.isEmpty() ? QString() : recording.statisticsFile.open(options_.stats);
}

RecordingStatistics AppDelegate::statistics() const
{
    RecordingStatistics now;
    now.time = CMTimeGetSeconds(recording.m_Current_Video_Frame);
    now.frames = recording.frameCounts;
    now.movie = recording.assetWriter->statistics();
    now.processor = processorTimeOfProcess();
    if (recording.soundRecorder && !recording.stopping) { // at the end no next frame is due
        // The sound file holds what is heard while recording, to the sample, so its time when the next frame is due
        // is the time recorded until then.
        const Nanoseconds sinceResumed =
            recording.m_RecordStatus == Paused
                ? recording.viewRemainder
                : platform_.runLoop->nextDeadline(compose.timerViewRefresh) - recording.notBefore;
        now.skew = now.time - std::chrono::duration<double>(recording.recordedBefore + sinceResumed).count();
    }
    return now;
}

void AppDelegate::beginStatistics()
{
    recording.frameCounts = {};
    recording.recordedBefore = Nanoseconds(0);
    recording.statisticsFile.begin(statistics());
}

void AppDelegate::writeStatistics()
{
    if (!recording.statisticsFile.isOpen())
        return;
    const auto line = recording.stopping ? StatisticsFile::Line::Last : StatisticsFile::Line::Ordinary;
    if (const QString problem = recording.statisticsFile.append(statistics(), line); !problem.isEmpty())
        tell(problem);
    recording.frameCounts.lateness = Nanoseconds(0);
}

} // namespace lumavex
