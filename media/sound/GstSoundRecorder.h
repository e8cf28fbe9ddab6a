// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/SoundRecorder.h"

namespace lumavex {

/// A recorder of the sound server's default source, or of the ALSA default device when no server runs. The device is
/// open from the first record() to stop(), also during a pause. See SoundRecorderFactory.
std::unique_ptr<SoundRecorder> createGstSoundRecorder(const QString& path, SoundRecorder::EventHandler onEvent);

} // namespace lumavex
