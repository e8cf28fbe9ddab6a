// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/loader/MediaBackends.h"

#include <QString>

#include <functional>

namespace lumavex {

/// The library of cameras and sound, or the reason for its absence as text for the user.
struct MediaLibrary {
    const MediaBackends* backends; ///< null: see `trouble`
    QString trouble;
};

/// Returns the library, always the same. The first call loads it; concurrent calls wait. Any thread.
using MediaLoader = std::function<const MediaLibrary&()>;

/// Loads the library in this file. It stays until the program ends, since the threads of its own libraries do. Any
/// thread.
MediaLibrary loadMediaLibrary(const QString& path);

/// The library that was built or installed with the program, loaded at the first call. Any thread, once the application
/// object exists.
const MediaLibrary& installedMediaLibrary();

} // namespace lumavex
