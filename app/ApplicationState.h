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

/// The application's own state, the folders it works in among it. Main thread.
struct ApplicationState : WorkingFolders {
    std::int64_t i_Top_Other_Windows = 0;         ///< 1: the main window floats above other applications' windows
    std::int64_t b_Show_Select_Region_How_To = 0; ///< 1: show the guide before entering the capture type
    std::int64_t b_Show_FollowCursor_How_To = 0;
    std::int64_t b_Show_WindowExclusive_How_To = 0;

    QString sffmpegPath; ///< the encoder; empty when it is not installed

    TimerId timerVideoRefresh = 0;
    TimerId updateTimer = 0;

    // The processor-load monitor.
    std::uint32_t numCPUs = 1;
    std::vector<std::int32_t> prevCpuInfo; ///< the previous sample; empty before the first
    std::mutex CPUUsageLock;               ///< held while samples are summed
    float fCPUUsage = 0; ///< busy fractions summed over half the number of processors; 0 until measured
    std::unique_ptr<Window_More_Information> p_Window_Can_Not_Record; ///< null: no information window is open
};

} // namespace lumavex
