// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MovieWriter.h"

#include <QString>

#include <cstdint>
#include <optional>

namespace lumavex {

/// Lengths written to the files, by the recording's own count and clock.
struct RecordedLengths {
    std::int64_t frames = 0;
    std::optional<double> pictureSeconds; ///< std::nullopt when a failed writer ended the movie early
    std::optional<double> soundSeconds;   ///< std::nullopt when the movie must not have sound
};

/// Compares a movie with the recorded lengths. Returns an empty text when nothing is missing, otherwise the missing
/// parts as text for the user. Any thread.
QString whatIsMissing(const MovieFacts& found, const RecordedLengths& recorded);

} // namespace lumavex
