// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/CameraSource.h"
#include "platform/SoundRecorder.h"
#include "platform/SoundSettings.h"

#include <memory>

namespace lumavex {

/// What the library of cameras and sound hands to the program, under the name in kMediaBackendsSymbol. Both are of one
/// build: nothing tells their versions apart. None of the functions is null or fails.
struct MediaBackends {
    std::unique_ptr<CameraSource> (*createCameraSource)();
    std::unique_ptr<SoundSettings> (*createSoundSettings)();
    std::unique_ptr<SoundRecorder> (*createSoundRecorder)(const QString& path, SoundRecorder::EventHandler onEvent);
};

inline constexpr const char* kMediaBackendsSymbol = "lumavexMediaBackends";

} // namespace lumavex
