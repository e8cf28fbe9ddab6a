// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"

#include <QString>

#include <optional>

namespace lumavex {

/// A sound server's current input, as the server describes it.
struct CurrentSoundInput {
    QString name; ///< for the user
    bool isMuted = false;
};

/// Asks the sound server (PulseAudio, or PipeWire in its place) which input is the current one. Nothing when no server
/// runs, it has no input, or it has not answered within `patience`. Any thread; starts no server.
std::optional<CurrentSoundInput> askSoundServer(Nanoseconds patience);

/// The first sound card that can record, of those ALSA knows; nothing when there is none. This is what is heard where
/// no server runs. `list` is in the format of /proc/asound/pcm.
std::optional<QString> firstAlsaInput(const QString& list = QStringLiteral("/proc/asound/pcm"));

} // namespace lumavex
