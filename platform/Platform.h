// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "platform/CameraSource.h"
#include "platform/ChildProcess.h"
#include "platform/Dialogs.h"
#include "platform/MovieWriter.h"
#include "platform/ProcessorLoad.h"
#include "platform/RunLoop.h"
#include "platform/ScreenGrabber.h"
#include "platform/ScreenOverlay.h"
#include "platform/SoundRecorder.h"
#include "platform/SoundSettings.h"
#include "platform/UserDefaults.h"

#include <memory>

namespace lumavex {

/// Interfaces to the system that the program runs on. Made once, after QApplication, by createPlatform.
struct Platform {
    std::unique_ptr<Clock> clock;
    std::unique_ptr<RunLoop> runLoop;
    std::unique_ptr<UserDefaults> userDefaults;
    std::unique_ptr<UserDefaults> moreSettings; ///< choices that are not among the settings, in their own file
    std::unique_ptr<Dialogs> dialogs;
    std::unique_ptr<ScreenGrabber> screen;
    std::unique_ptr<ScreenOverlay> overlay;
    std::unique_ptr<CameraSource> cameras;
    std::unique_ptr<ProcessorLoad> processorLoad;
    std::unique_ptr<SoundSettings> soundSettings;
    SoundRecorderFactory createSoundRecorder;
    MovieWriterFactory createMovieWriter;
    MovieRepair repairMovie;
    MovieReader readMovie;
    ChildProcessFactory createChildProcess;
};

/// The backends of this machine, chosen only in createPlatform.cpp.
Platform createPlatform();

} // namespace lumavex
