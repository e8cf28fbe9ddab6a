// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/late/MediaBackends.h"

#include <QString>

#include <functional>

namespace lumavex {

/// The library of cameras and sound, or why there is none, in the user's words.
struct MediaLibrary {
    const MediaBackends* backends; ///< null: `trouble` says why
    QString trouble;
};

/// Gives the library, the same each time, and loads it at the first call. Main thread.
using MediaLoader = std::function<const MediaLibrary&()>;

/// The library that was installed with the program. Once loaded it stays until the program ends, since the threads of
/// its own libraries do. That it cannot be loaded is logged once.
const MediaLibrary& installedMediaLibrary();

} // namespace lumavex
