// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/Platform.h"

#include "media/loader/LazyMedia.h"
#include "movie/JpegMovieWriter.h"
#include "movie/MovieReader.h"
#include "platform/qt/IniUserDefaults.h"
#include "platform/qt/MonotonicClock.h"
#include "platform/qt/ProcStatLoad.h"
#include "platform/qt/QtChildProcess.h"
#include "platform/qt/QtDialogs.h"
#include "platform/qt/QtRunLoop.h"
#include "platform/x11/X11Overlay.h"
#include "platform/x11/XcbScreenGrabber.h"

namespace lumavex {

Platform createPlatform()
{
    Platform platform;
    platform.clock = std::make_unique<MonotonicClock>();
    platform.runLoop = std::make_unique<QtRunLoop>(*platform.clock);
    platform.userDefaults = std::make_unique<IniUserDefaults>(userDefaultsPath());
    platform.moreSettings = std::make_unique<IniUserDefaults>(moreSettingsPath(), IniUserDefaults::Holds::Choices);
    platform.dialogs = std::make_unique<QtDialogs>();
    platform.screen = createXcbScreenGrabber();
    platform.overlay = createX11Overlay();
    platform.cameras = createLazyCameraSource(installedMediaLibrary);
    platform.processorLoad = std::make_unique<ProcStatLoad>();
    platform.soundSettings = createLazySoundSettings(installedMediaLibrary);
    platform.createSoundRecorder = lazySoundRecorderFactory(installedMediaLibrary);
    platform.createMovieWriter = createJpegMovieWriter;
    platform.repairMovie = repairMovie;
    platform.readMovie = readMovie;
    platform.createChildProcess = [] { return std::make_unique<QtChildProcess>(); };
    return platform;
}

} // namespace lumavex
