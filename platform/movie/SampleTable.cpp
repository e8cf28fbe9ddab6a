// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/movie/SampleTable.h"

#include <algorithm>

namespace lumavex {

void SampleTable::setEnd(std::int64_t end)
{
    const std::int64_t start = samples_.empty() ? 0 : samples_.back().start;
    end_ = samples_.empty() ? 0 : std::clamp(end, start + 1, start + kLongestSample);
}

std::uint32_t SampleTable::durationOf(std::size_t index) const
{
    const std::int64_t next = index + 1 < samples_.size() ? samples_[index + 1].start : end_;
    return static_cast<std::uint32_t>(next - samples_[index].start);
}

// A chunk is a run of samples that lie one behind the other, so that a repeated frame begins one of its own.
bool SampleTable::beginsChunk(std::size_t index) const
{
    return index == 0 || samples_[index].offset != samples_[index - 1].offset + samples_[index - 1].size;
}

void SampleTable::writeTimeToSample(BoxWriter& writer) const
{
    const BoxWriter::Box box(writer, "stts", 0, 0);
    const std::size_t countAt = writer.size();
    writer.u32(0);
    std::uint32_t entries = 0;
    for (std::size_t i = 0; i < samples_.size(); ++entries) {
        const std::size_t first = i;
        const std::uint32_t duration = durationOf(first);
        while (i < samples_.size() && durationOf(i) == duration)
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
    for (std::size_t i = 0; i < samples_.size();) {
        const std::size_t first = i++;
        while (i < samples_.size() && !beginsChunk(i))
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
    writer.u32(static_cast<std::uint32_t>(samples_.size()));
    for (const MovieSample& sample : samples_)
        writer.u32(sample.size);
}

void SampleTable::writeChunkOffsets(BoxWriter& writer) const
{
    const BoxWriter::Box box(writer, "co64", 0, 0);
    const std::size_t countAt = writer.size();
    writer.u32(0);
    std::uint32_t entries = 0;
    for (std::size_t i = 0; i < samples_.size(); ++i) {
        if (!beginsChunk(i))
            continue;
        writer.u64(static_cast<std::uint64_t>(samples_[i].offset));
        ++entries;
    }
    writer.setU32At(countAt, entries);
}

} // namespace lumavex
