// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/loader/MediaBackends.h"

#include <QString>

#include <functional>

namespace lumavex {

/// The library of cameras and sound, or why there is none, in the user's words.
struct MediaLibrary {
    const MediaBackends* backends; ///< null: `trouble` says why
    QString trouble;
};

/// Gives the library, the same each time, and loads it at the first call, for which the others wait. Any thread.
using MediaLoader = std::function<const MediaLibrary&()>;

/// Loads the library in that file. It stays until the program ends, since the threads of its own libraries do. Any
/// thread.
MediaLibrary loadMediaLibrary(const QString& path);

/// The library that was built or installed with the program, loaded at the first call. Any thread, after the
/// application was made.
const MediaLibrary& installedMediaLibrary();

} // namespace lumavex
