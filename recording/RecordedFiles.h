// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

namespace lumavex {

/// Checks of the files that a killed run left. All functions: any thread.

/// True when a movie is worth keeping. False when the file is empty, missing or not a regular file, or when its boxes
/// (ISO/IEC 14496-12) can be read to the end and contain neither a fragment nor media data: nothing presentable was
/// recorded. A file whose boxes cannot be read is kept, since a doubt must not cost a recording.
bool movieHoldsFrames(const QString& path);

/// True when a sound file contains data after its header. A link does not count as a sound file.
bool soundHoldsSamples(const QString& path);

/// Duration of a sound file by its content, whatever its header says; std::nullopt when it cannot be determined.
std::optional<double> soundSeconds(const QString& path);

/// Corrects the lengths in a WAV header that a killed program left too short. A correct header is not changed. Returns
/// an empty text, or the reason for a failure as text for the user.
QString repairSoundHeader(const QString& path);

} // namespace lumavex
