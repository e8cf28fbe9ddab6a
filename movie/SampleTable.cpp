// SPDX-License-Identifier: GPL-3.0-or-later
#include "movie/SampleTable.h"

#include <algorithm>

namespace lumavex {

void SampleTable::append(const MovieSample& sample)
{
    if (count_ > 0) {
        const std::size_t last = count_ - 1;
        blocks_[last / kEntriesPerBlock][last % kEntriesPerBlock].duration =
            static_cast<std::uint32_t>(sample.start - lastStart_);
    }
    if (count_ % kEntriesPerBlock == 0)
        blocks_.emplace_back();
    blocks_.back()[count_ % kEntriesPerBlock] = {sample.offset, sample.size, 0};
    ++count_;
    lastStart_ = sample.start;
}

void SampleTable::setEnd(std::int64_t end)
{
    end_ = count_ == 0 ? 0 : std::clamp(end, lastStart_ + 1, lastStart_ + kLongestSample);
}

std::uint32_t SampleTable::durationOf(std::size_t index) const
{
    return index + 1 < count_ ? at(index).duration : static_cast<std::uint32_t>(end_ - lastStart_);
}

// A chunk is a run of contiguous samples, so that a repeated frame begins a new chunk.
bool SampleTable::beginsChunk(std::size_t index) const
{
    return index == 0 || at(index).offset != at(index - 1).offset + at(index - 1).size;
}

std::vector<MovieSample> SampleTable::samples() const
{
    std::vector<MovieSample> all(count_);
    std::int64_t start = lastStart_;
    for (std::size_t i = count_; i-- > 0;) {
        if (i + 1 < count_)
            start -= at(i).duration;
        all[i] = {start, at(i).offset, at(i).size};
    }
    return all;
}

void SampleTable::writeTimeToSample(BoxWriter& writer) const
{
    const BoxWriter::Box box(writer, "stts", 0, 0);
    const std::size_t countAt = writer.size();
    writer.u32(0);
    std::uint32_t entries = 0;
    for (std::size_t i = 0; i < count_; ++entries) {
        const std::size_t first = i;
        const std::uint32_t duration = durationOf(first);
        while (i < count_ && durationOf(i) == duration)
            ++i;
        writer.u32(static_cast<std::uint32_t>(i - first));
        writer.u32(duration);
    }
    writer.setU32At(countAt, entries);
}

void SampleTable::writeSampleToChunk(BoxWriter& writer) const
{
    const BoxWriter::Box box(writer, "stsc", 0, 0);
    const std::size_t countAt = writer.size();
    writer.u32(0);
    std::uint32_t entries = 0;
    std::uint32_t chunk = 0;
    std::size_t previousLength = 0;
    for (std::size_t i = 0; i < count_;) {
        const std::size_t first = i++;
        while (i < count_ && !beginsChunk(i))
            ++i;
        ++chunk;
        if (i - first != previousLength) {
            previousLength = i - first;
            writer.u32(chunk);
            writer.u32(static_cast<std::uint32_t>(previousLength));
            writer.u32(1); // the one sample description
            ++entries;
        }
    }
    writer.setU32At(countAt, entries);
}

void SampleTable::writeSampleSizes(BoxWriter& writer) const
{
    const BoxWriter::Box box(writer, "stsz", 0, 0);
    writer.u32(0); // no common size
    writer.u32(static_cast<std::uint32_t>(count_));
    for (std::size_t i = 0; i < count_; ++i)
        writer.u32(at(i).size);
}

void SampleTable::writeChunkOffsets(BoxWriter& writer) const
{
    const BoxWriter::Box box(writer, "co64", 0, 0);
    const std::size_t countAt = writer.size();
    writer.u32(0);
    std::uint32_t entries = 0;
    for (std::size_t i = 0; i < count_; ++i) {
        if (!beginsChunk(i))
            continue;
        writer.u64(static_cast<std::uint64_t>(at(i).offset));
        ++entries;
    }
    writer.setU32At(countAt, entries);
}

} // namespace lumavex
