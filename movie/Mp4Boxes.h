// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "movie/SampleTable.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

namespace lumavex {

/// The most ticks per second. A finer scale would make the saved movie unreadable to some players: they keep times in
/// 32 bits.
inline constexpr std::int32_t kFinestTimescale = 90000;

/// Ticks per second for a movie of that nominal rate: the largest multiple of the rate that is not too fine, so that a
/// frame lasts a whole number of ticks and players read the rate exactly. When the rate wavers, a time between two
/// ticks is rounded to the nearest, 5.6 µs at most, each on its own, so that nothing adds up.
constexpr std::int32_t movieTimescale(std::int32_t nominalRate)
{
    return kFinestTimescale - kFinestTimescale % std::clamp(nominalRate, 1, kFinestTimescale);
}

struct MovieTrack {
    int width = 0;                             ///< pixels
    int height = 0;                            ///< pixels
    std::uint64_t creationTime = 0;            ///< seconds since the start of 1904, UTC
    std::int32_t timescale = kFinestTimescale; ///< ticks per second, of the movie and of its one track alike
};

/// What a growing movie begins with: ftyp, a free box of 16 bytes, and a moov without samples that announces fragments.
struct GrowingHead {
    std::vector<std::uint8_t> bytes;
    std::size_t durationOffset = 0; ///< where the movie's length stands (mehd): 64 bits, ticks
};
GrowingHead growingHead(const MovieTrack& track);

/// What a finished movie begins with: as many bytes as ftyp and free had, but the free box has become the header of an
/// mdat that reaches to `mediaEnd` (bytes from the start of the file).
std::vector<std::uint8_t> finishedHead(std::int64_t mediaEnd);

/// The moov of a finished movie. There is no edit list: the timeline is the media's own.
void writeCompleteMoov(BoxWriter& writer, const MovieTrack& track, const SampleTable& table);

/// One frame of a fragment; `picture` counts the JPEG pictures in the fragment's mdat. It grows by one or, when frames
/// share a picture, by none.
struct FragmentSample {
    std::int64_t start = 0; ///< ticks
    std::size_t picture = 0;
};

/// The moof of a fragment and the header of the mdat behind it, which is to hold pictures of the given sizes, for an
/// empty writer. `end` is when the last sample ends.
void writeFragmentHead(BoxWriter& writer, std::uint32_t sequenceNumber, std::span<const FragmentSample> samples,
                       std::int64_t end, std::span<const std::uint32_t> pictureSizes);

} // namespace lumavex
