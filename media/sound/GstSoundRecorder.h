// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/SoundRecorder.h"

namespace lumavex {

/// A recorder that hears the sound server's default source, or the ALSA default device where no server runs. The
/// device is open from the first record to stop, during a pause too. See SoundRecorderFactory.
std::unique_ptr<SoundRecorder> createGstSoundRecorder(const QString& path, SoundRecorder::EventHandler onEvent);

} // namespace lumavex
