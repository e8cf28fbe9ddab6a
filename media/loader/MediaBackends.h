// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/CameraSource.h"
#include "platform/SoundRecorder.h"
#include "platform/SoundSettings.h"

#include <memory>

namespace lumavex {

/// Functions that the library of cameras and sound offers to the program, under the name in kMediaBackendsSymbol. None
/// is null or fails.
struct MediaBackends {
    /// LUMAVEX_INTERFACE_STAMP, a digest of this file and of the interfaces. A library with another digest is of
    /// another build and must not be called. First in every build.
    const char* stamp;
    std::unique_ptr<CameraSource> (*createCameraSource)();
    std::unique_ptr<SoundSettings> (*createSoundSettings)();
    std::unique_ptr<SoundRecorder> (*createSoundRecorder)(const QString& path, SoundRecorder::EventHandler onEvent);
};

inline constexpr const char* kMediaBackendsSymbol = "lumavexMediaBackends";

} // namespace lumavex
