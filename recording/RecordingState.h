// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Geometry.h"
#include "platform/MovieWriter.h"
#include "platform/RunLoop.h"
#include "platform/SoundRecorder.h"
#include "recording/FrameCounts.h"
#include "recording/RecordingEnd.h"
#include "recording/RecordingIncidents.h"
#include "recording/RecordingStatistics.h"
#include "recording/StreamCompletion.h"
#include "recording/Window_Progress.h"
#include "recording/WriterReadiness.h"

#include <QString>

#include <cstdint>
#include <memory>

namespace lumavex {

/// The phase of a recording, as stored in m_RecordStatus.
enum RecordStatus : std::uint64_t {
    Idle = 0,
    Recording = 1,
    Paused = 2,
};

/// State of a recording. Main thread. The objects of a recording live until the next one starts.
struct RecordingState {
    std::uint64_t m_RecordStatus = Idle;

    std::int64_t b_Record_Include_Audio = 0;         ///< 1: with sound
    std::int32_t m_Seconds_of_Recording = 0;         ///< whole seconds recorded, without pauses
    std::int32_t i_fps_of_Recording = 1;             ///< nominal frames per second, at least 1
    std::int32_t i_Actual_FPS_while_Recording = 1;   ///< the reciprocal is the step of the clock
    std::int64_t i_debug_number_of_view_refresh = 0; ///< frames appended since the last one-second tick
    std::int64_t i_Frames_Appended = 0;              ///< in this recording, including repeated frames
    CMTime m_Current_Video_Frame;                    ///< time of the next frame
    CMTime firstVideoFrame;                          ///< time of the first frame, where the movie begins
    CGSize size_Movie;                               ///< size for which the writer was created, whatever the output
                                                     ///< size is now
    Nanoseconds notBefore{0};      ///< refreshes due earlier belong to the time before Record or Resume
    Nanoseconds recordedBefore{0}; ///< recorded time up to the latest Pause

    /// True when the refresh that was due at `deadline` belongs to the running recording.
    bool isRecordingAt(Nanoseconds deadline) const
    {
        return m_RecordStatus == Recording && !isEnding() && deadline >= notBefore;
    }
    /// True when Stop was pressed and has not returned yet: Record is refused.
    bool isEnding() const { return end != nullptr; }

    FrameCounts frameCounts;
    RecordingIncidents incidents;
    bool shortageTold = false;     ///< missing pictures were reported in this recording
    StatisticsFile statisticsFile; ///< open only when statistics are requested

    QString s_Video_File_Source; ///< file of the writer
    QString s_Sound_File_Source; ///< sound file, which exists only with sound
    QString s_AV_File_Source;    ///< joined file

    std::unique_ptr<MovieWriter> assetWriter;
    MovieInput* assetInput = nullptr;                 ///< owned by assetWriter
    PixelBufferAdaptor* assetInputAdaptor = nullptr;  ///< owned by assetWriter
    std::unique_ptr<WriterReadiness> writerReadiness; ///< waits until assetInput accepts a frame; destroyed before
                                                      ///< assetWriter
    std::unique_ptr<SoundRecorder> soundRecorder;
    TimerId recordTimer = 0; ///< of the duration display

    /// Remainder of each period when the recording was paused.
    Nanoseconds refreshRemainder{0};
    Nanoseconds secondRemainder{0};
    Nanoseconds durationRemainder{0};

    std::unique_ptr<Window_Progress> windowProgress; ///< only during Stop
    std::unique_ptr<StreamCompletion> completion;    ///< only during Stop; destroyed before assetWriter
    std::unique_ptr<RecordingEnd> end;               ///< only during Stop

    /// Length of the movie so far.
    double movieSeconds() const { return CMTimeGetSeconds(CMTimeSubtract(m_Current_Video_Frame, firstVideoFrame)); }
};

} // namespace lumavex
