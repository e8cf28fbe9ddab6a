// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/RunLoop.h"
#include "recording/WorkingFolders.h"

#include <QString>

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace lumavex {

class Window_More_Information;

/// State of the application itself, including its working folders. Main thread.
struct ApplicationState : WorkingFolders {
    std::int64_t i_Top_Other_Windows = 0;         ///< 1: the main window floats above other applications' windows
    std::int64_t b_Show_Select_Region_How_To = 0; ///< 1: show the guide before entering the capture type
    std::int64_t b_Show_FollowCursor_How_To = 0;
    std::int64_t b_Show_WindowExclusive_How_To = 0;

    QString sffmpegPath; ///< path of the encoder; empty when it is not installed

    TimerId timerVideoRefresh = 0;
    TimerId updateTimer = 0;

    // Processor-load monitor.
    std::uint32_t numCPUs = 1;
    std::vector<std::int32_t> prevCpuInfo; ///< previous sample; empty before the first one
    std::mutex CPUUsageLock;               ///< locked while samples are summed
    float fCPUUsage = 0; ///< sum of busy fractions over half the number of processors; 0 until measured
    std::unique_ptr<Window_More_Information> p_Window_Can_Not_Record; ///< null: no information window is open
};

} // namespace lumavex
