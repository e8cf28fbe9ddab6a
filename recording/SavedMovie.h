// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MovieWriter.h"

#include <QString>

#include <cstdint>
#include <optional>

namespace lumavex {

/// What a recording put into its files, by its own count and clock.
struct RecordedLengths {
    std::int64_t frames = 0;
    std::optional<double> pictureSeconds; ///< nothing when a failed writer ended the movie where it could
    std::optional<double> soundSeconds;   ///< nothing when the movie is to have no sound
};

/// Holds a movie that was read against what was recorded. Empty when nothing is missing, else what is, in the user's
/// words. Any thread.
QString whatIsMissing(const MovieFacts& found, const RecordedLengths& recorded);

} // namespace lumavex
