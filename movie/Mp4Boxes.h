// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "movie/SampleTable.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

namespace lumavex {

/// Maximum ticks per second. Some players keep times in 32 bits and could not read a movie with a finer scale.
inline constexpr std::int32_t kFinestTimescale = 90000;

/// Ticks per second for a movie of this nominal rate: the largest multiple of the rate that is not too fine, so that a
/// frame lasts a whole number of ticks and players read the rate exactly. When the rate varies, a time between two
/// ticks is rounded to the nearest, by 5.6 µs at most. Each time is rounded on its own, so errors do not add up.
constexpr std::int32_t movieTimescale(std::int32_t nominalRate)
{
    return kFinestTimescale - kFinestTimescale % std::clamp(nominalRate, 1, kFinestTimescale);
}

struct MovieTrack {
    int width = 0;                             ///< pixels
    int height = 0;                            ///< pixels
    std::uint64_t creationTime = 0;            ///< seconds since the start of 1904, UTC
    std::int32_t timescale = kFinestTimescale; ///< ticks per second of the movie and of its only track
};

/// The head of a growing movie: ftyp, a free box of 16 bytes, and a moov without samples that announces fragments.
struct GrowingHead {
    std::vector<std::uint8_t> bytes;
    std::size_t durationOffset = 0; ///< offset of the movie's duration (mehd): 64 bits, ticks
};
GrowingHead growingHead(const MovieTrack& track);

/// The head of a finished movie: as long as ftyp and free, but instead of free it has the header of an mdat that
/// extends to `mediaEnd` (bytes from the start of the file).
std::vector<std::uint8_t> finishedHead(std::int64_t mediaEnd);

/// Writes the moov of a finished movie. It has no edit list: the movie's timeline is that of its media.
void writeCompleteMoov(BoxWriter& writer, const MovieTrack& track, const SampleTable& table);

/// One frame of a fragment. `picture` is the index of its JPEG picture in the fragment's mdat: one more than the
/// previous frame's, or the same when frames share a picture.
struct FragmentSample {
    std::int64_t start = 0; ///< ticks
    std::size_t picture = 0;
};

/// Writes the moof of a fragment and the header of the following mdat, for pictures of the given sizes, to an empty
/// writer. `end` is the end of the last sample.
void writeFragmentHead(BoxWriter& writer, std::uint32_t sequenceNumber, std::span<const FragmentSample> samples,
                       std::int64_t end, std::span<const std::uint32_t> pictureSizes);

} // namespace lumavex
