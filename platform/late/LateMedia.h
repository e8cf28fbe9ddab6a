// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/late/MediaLibrary.h"

#include <memory>

namespace lumavex {

// Cameras and sound whose library is loaded by the first call that needs it, so that the window need not wait for it.
// Without the library there is no camera, and a recorder says at once that the sound is lost and leaves no file.

std::unique_ptr<CameraSource> createLateCameraSource(MediaLoader library);
std::unique_ptr<SoundSettings> createLateSoundSettings(MediaLoader library);
SoundRecorderFactory lateSoundRecorderFactory(MediaLoader library);

} // namespace lumavex
