// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace lumavex {

/// Header and samples of a WAV file.
struct RecordedSound {
    std::int64_t headerFrames = 0;     ///< by the header
    std::vector<std::int16_t> samples; ///< in the file, interleaved

    std::int64_t frames() const { return static_cast<std::int64_t>(samples.size() / 2); }
    bool isSilent(std::int64_t begin, std::int64_t end) const;
};

/// Fails the test when the header is not that of 44100 Hz, two channels and 16 bits.
RecordedSound readWav(const QString& path);

/// Interleaved white noise, the same in every run: any piece of it tells its place.
std::vector<std::int16_t> noise(std::int64_t frames);

/// Where in the played sound the piece of 20 ms that the file holds at `frame` comes from: the best match within
/// `range` frames of `expected`. Null when nothing matches.
std::optional<std::int64_t> placeInPlayed(const RecordedSound& recorded, std::int64_t frame,
                                          const std::vector<std::int16_t>& played, std::int64_t expected,
                                          std::int64_t range);

} // namespace lumavex
