// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "movie/BoxWriter.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <vector>

namespace lumavex {

/// One frame of the movie and its position in the file. Several samples may share the same bytes.
struct MovieSample {
    std::int64_t start = 0;  ///< ticks of the track's timescale
    std::int64_t offset = 0; ///< bytes from the start of the file
    std::uint32_t size = 0;  ///< bytes
};

/// Longest duration of a sample, in ticks: durations are stored in 32 bits.
inline constexpr std::int64_t kLongestSample = std::numeric_limits<std::uint32_t>::max();

/// All samples of the file in the order of their times; the source of the sample tables of a complete moov. Uses 16
/// bytes per sample. A plain value.
class SampleTable {
public:
    /// Starts must increase, by kLongestSample at most. The sample lasts until the start of the next one, or until
    /// end().
    void append(const MovieSample& sample);
    /// Sets the end of the last sample, limited to a duration that a sample can have.
    void setEnd(std::int64_t end);

    std::size_t count() const { return count_; }
    std::vector<MovieSample> samples() const;             ///< a full copy, for checking a table
    std::int64_t lastStart() const { return lastStart_; } ///< ticks; 0 when there is no sample
    std::int64_t end() const { return end_; }

    void writeTimeToSample(BoxWriter& writer) const;  ///< stts
    void writeSampleToChunk(BoxWriter& writer) const; ///< stsc
    void writeSampleSizes(BoxWriter& writer) const;   ///< stsz
    void writeChunkOffsets(BoxWriter& writer) const;  ///< co64

private:
    struct Entry {
        std::int64_t offset;
        std::uint32_t size;
        std::uint32_t duration; ///< not yet known for the last sample
    };
    // A single array would exist twice each time it grows, and be half empty afterwards.
    static constexpr std::size_t kEntriesPerBlock = 4096;
    using Block = std::array<Entry, kEntriesPerBlock>;

    const Entry& at(std::size_t index) const { return blocks_[index / kEntriesPerBlock][index % kEntriesPerBlock]; }
    std::uint32_t durationOf(std::size_t index) const;
    bool beginsChunk(std::size_t index) const;

    std::deque<Block> blocks_;
    std::size_t count_ = 0;
    std::int64_t lastStart_ = 0;
    std::int64_t end_ = 0;
};

} // namespace lumavex
