// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/loader/MediaLibrary.h"

#include <memory>

namespace lumavex {

// Cameras and sound whose library is loaded by the first call that needs it, so that the window need not wait for it.
// That call takes the time for loading in addition to what the interface promises; only `beginListing` loads on its own
// thread. Without the library there is no camera, and a recorder reports at once that the sound is lost and leaves no
// file.

std::unique_ptr<CameraSource> createLazyCameraSource(MediaLoader load);
std::unique_ptr<SoundSettings> createLazySoundSettings(MediaLoader load);
SoundRecorderFactory lazySoundRecorderFactory(MediaLoader load);

} // namespace lumavex
