// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/movie/BoxWriter.h"

#include <cstdint>
#include <limits>
#include <vector>

namespace lumavex {

/// One frame of the movie, as it lies in the file. Several samples may lie at the same bytes.
struct MovieSample {
    std::int64_t start = 0;  ///< ticks of kMovieTimescale
    std::int64_t offset = 0; ///< bytes from the start of the file
    std::uint32_t size = 0;  ///< bytes
};

/// The longest that a sample can last, in ticks: durations are stored in 32 bits.
inline constexpr std::int64_t kLongestSample = std::numeric_limits<std::uint32_t>::max();

/// All samples of the file, in the order of their times, from which the sample tables of a complete moov are made.
/// A plain value.
class SampleTable {
public:
    /// The sample lasts until the start of the next one, or until end().
    void append(const MovieSample& sample) { samples_.push_back(sample); }
    /// When the last sample ends, brought within what a sample can last.
    void setEnd(std::int64_t end);

    const std::vector<MovieSample>& samples() const { return samples_; }
    std::int64_t end() const { return end_; }

    void writeTimeToSample(BoxWriter& writer) const;  ///< stts
    void writeSampleToChunk(BoxWriter& writer) const; ///< stsc
    void writeSampleSizes(BoxWriter& writer) const;   ///< stsz
    void writeChunkOffsets(BoxWriter& writer) const;  ///< co64

private:
    std::uint32_t durationOf(std::size_t index) const;
    bool beginsChunk(std::size_t index) const;

    std::vector<MovieSample> samples_;
    std::int64_t end_ = 0;
};

} // namespace lumavex
