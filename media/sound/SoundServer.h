// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"

#include <QString>

#include <optional>

namespace lumavex {

/// The current input of a sound server, as the server describes it.
struct CurrentSoundInput {
    QString name; ///< for the user
    bool isMuted = false;
};

/// Asks the sound server (PulseAudio, or PipeWire in its place) for its current input. std::nullopt when no server
/// runs, it has no input, or it has not answered within `patience`. Any thread; starts no server.
std::optional<CurrentSoundInput> askSoundServer(Nanoseconds patience);

/// The first sound card known to ALSA that can record, which is the input when no server runs; std::nullopt when there
/// is none. `list` is in the format of /proc/asound/pcm.
std::optional<QString> firstAlsaInput(const QString& list = QStringLiteral("/proc/asound/pcm"));

} // namespace lumavex
