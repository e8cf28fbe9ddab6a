// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/movie/SampleTable.h"

#include <cstdint>
#include <span>
#include <vector>

namespace lumavex {

/// Ticks per second of the movie and of its one track alike. Every rate that divides it (24, 25, 30, 48, 50, 60, 120)
/// is kept exactly; a time between two ticks (29 frames a second, say) is rounded to the nearest, 5.6 µs at most, each
/// on its own, so that nothing adds up. A finer scale would make the saved movie unreadable to some players: they
/// keep times in 32 bits.
inline constexpr std::int32_t kMovieTimescale = 90000;

struct MovieTrack {
    int width = 0;                  ///< pixels
    int height = 0;                 ///< pixels
    std::uint64_t creationTime = 0; ///< seconds since the start of 1904, UTC
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
