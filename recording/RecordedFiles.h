// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

namespace lumavex {

/// What a killed run left in a file. All functions: any thread.

/// Whether a movie is worth keeping. Not when the file is empty, missing or not a regular file, nor when its boxes
/// (ISO/IEC 14496-12) can be read to the end and hold neither a fragment nor media data: nothing was recorded, or
/// nothing that could be shown. A file whose boxes cannot be read is kept, since a doubt must not cost a recording.
bool movieHoldsFrames(const QString& path);

/// Whether a sound file has anything behind its header. A link is no sound file.
bool soundHoldsSamples(const QString& path);

/// How long a sound file plays by what it holds, whatever its header says; nothing when it cannot be told.
std::optional<double> soundSeconds(const QString& path);

/// Makes the lengths in a WAV header tell what the file holds, where a killed program left them short. A header that is
/// right is not touched. Empty, or why not, in the user's words.
QString repairSoundHeader(const QString& path);

} // namespace lumavex
