// SPDX-License-Identifier: GPL-3.0-or-later
#include "movie/Mp4Boxes.h"

#include <algorithm>

namespace lumavex {

namespace {

using Box = BoxWriter::Box;

constexpr std::uint32_t kTrackId = 1;
constexpr std::uint32_t kFixedOne = 0x00010000;               // 1.0 as 16.16
constexpr std::uint32_t kDependsOnNoOtherSample = 0x02000000; // sample_depends_on of 2
constexpr std::uint32_t kDefaultBaseIsMoof = 0x020000;
constexpr std::uint32_t kRunHasOffsetDurationsSizes = 0x000001 | 0x000100 | 0x000200;
constexpr std::size_t kRunOffsetAt = 16; // after the header, version and flags, and the number of samples
constexpr std::uint32_t kMediaHeaderSize = 8;

void writeMatrix(BoxWriter& writer)
{
    for (const std::uint32_t value : {kFixedOne, 0U, 0U, 0U, kFixedOne, 0U, 0U, 0U, 0x40000000U})
        writer.u32(value);
}

void writeMovieHeader(BoxWriter& writer, const MovieTrack& track, std::int64_t duration)
{
    const Box box(writer, "mvhd", 1, 0);
    writer.u64(track.creationTime);
    writer.u64(track.creationTime);
    writer.u32(static_cast<std::uint32_t>(track.timescale));
    writer.u64(static_cast<std::uint64_t>(duration));
    writer.u32(kFixedOne); // rate
    writer.u16(0x0100);    // volume
    writer.zeros(10);
    writeMatrix(writer);
    writer.zeros(24);
    writer.u32(kTrackId + 1);
}

void writeTrackHeader(BoxWriter& writer, const MovieTrack& track, std::int64_t duration)
{
    const Box box(writer, "tkhd", 1, 0x3); // enabled, in the movie
    writer.u64(track.creationTime);
    writer.u64(track.creationTime);
    writer.u32(kTrackId);
    writer.zeros(4);
    writer.u64(static_cast<std::uint64_t>(duration));
    writer.zeros(16); // reserved, layer, alternate group, volume, reserved
    writeMatrix(writer);
    writer.u32(static_cast<std::uint32_t>(track.width) << 16);
    writer.u32(static_cast<std::uint32_t>(track.height) << 16);
}

void writeMediaHeader(BoxWriter& writer, const MovieTrack& track, std::int64_t duration)
{
    {
        const Box box(writer, "mdhd", 1, 0);
        writer.u64(track.creationTime);
        writer.u64(track.creationTime);
        writer.u32(static_cast<std::uint32_t>(track.timescale));
        writer.u64(static_cast<std::uint64_t>(duration));
        writer.u16(0x55C4); // "und": no language
        writer.u16(0);
    }
    const Box box(writer, "hdlr", 0, 0);
    writer.u32(0);
    writer.text("vide");
    writer.zeros(12);
    writer.text("Lumavex video");
    writer.u8(0);
}

void writeSampleDescription(BoxWriter& writer, const MovieTrack& track)
{
    constexpr std::string_view kCompressor = "Motion JPEG";
    const Box box(writer, "stsd", 0, 0);
    writer.u32(1);
    const Box entry(writer, "jpeg");
    writer.zeros(6);
    writer.u16(1); // data reference index
    writer.zeros(16);
    writer.u16(static_cast<std::uint32_t>(track.width));
    writer.u16(static_cast<std::uint32_t>(track.height));
    writer.u32(72U << 16); // pixels per inch, horizontal and vertical
    writer.u32(72U << 16);
    writer.u32(0);
    writer.u16(1); // frames per sample
    writer.u8(static_cast<std::uint8_t>(kCompressor.size()));
    writer.text(kCompressor);
    writer.zeros(31 - kCompressor.size());
    writer.u16(24);     // depth: colour, no alpha
    writer.u16(0xFFFF); // no colour table
}

void writeMediaInformation(BoxWriter& writer, const MovieTrack& track, const SampleTable& table)
{
    const Box minf(writer, "minf");
    {
        const Box box(writer, "vmhd", 0, 1);
        writer.zeros(8);
    }
    {
        const Box dinf(writer, "dinf");
        const Box dref(writer, "dref", 0, 0);
        writer.u32(1);
        const Box url(writer, "url ", 0, 1); // in this file
    }
    const Box stbl(writer, "stbl");
    writeSampleDescription(writer, track);
    table.writeTimeToSample(writer);
    table.writeSampleToChunk(writer);
    table.writeSampleSizes(writer);
    table.writeChunkOffsets(writer);
}

void writeTrack(BoxWriter& writer, const MovieTrack& track, const SampleTable& table)
{
    const Box trak(writer, "trak");
    writeTrackHeader(writer, track, table.end());
    const Box mdia(writer, "mdia");
    writeMediaHeader(writer, track, table.end());
    writeMediaInformation(writer, track, table);
}

// Both kinds of file have the same number of brands, so that one ftyp can overwrite the other.
void writeFileType(BoxWriter& writer, std::string_view major, std::string_view brands)
{
    const Box box(writer, "ftyp");
    writer.text(major);
    writer.u32(0x200);
    writer.text(brands);
}

void writeRun(BoxWriter& writer, std::span<const FragmentSample> run, std::int64_t runEnd,
              std::span<const std::uint32_t> pictureSizes, std::uint32_t dataOffset)
{
    const Box box(writer, "trun", 0, kRunHasOffsetDurationsSizes);
    writer.u32(static_cast<std::uint32_t>(run.size()));
    writer.u32(dataOffset);
    for (std::size_t i = 0; i < run.size(); ++i) {
        const std::int64_t next = i + 1 < run.size() ? run[i + 1].start : runEnd;
        writer.u32(static_cast<std::uint32_t>(next - run[i].start));
        writer.u32(pictureSizes[run[i].picture]);
    }
}

} // namespace

GrowingHead growingHead(const MovieTrack& track)
{
    GrowingHead head;
    BoxWriter writer;
    writeFileType(writer, "iso5", "iso5iso6mp42");
    {
        const Box box(writer, "free");
        writer.zeros(8);
    }
    {
        const Box moov(writer, "moov");
        writeMovieHeader(writer, track, 0);
        writeTrack(writer, track, {});
        const Box mvex(writer, "mvex");
        {
            const Box box(writer, "mehd", 1, 0);
            head.durationOffset = writer.size();
            writer.u64(0);
        }
        const Box box(writer, "trex", 0, 0);
        writer.u32(kTrackId);
        writer.u32(1); // sample description
        writer.u32(0);
        writer.u32(0);
        writer.u32(kDependsOnNoOtherSample);
    }
    head.bytes = writer.take();
    return head;
}

std::vector<std::uint8_t> finishedHead(std::int64_t mediaEnd)
{
    BoxWriter writer;
    writeFileType(writer, "mp42", "mp42isomiso2");
    const auto start = static_cast<std::int64_t>(writer.size());
    writer.u32(1); // the size is in the 64 bits after the name
    writer.text("mdat");
    writer.u64(static_cast<std::uint64_t>(mediaEnd - start));
    return writer.take();
}

void writeCompleteMoov(BoxWriter& writer, const MovieTrack& track, const SampleTable& table)
{
    const Box moov(writer, "moov");
    writeMovieHeader(writer, track, table.end());
    writeTrack(writer, track, table);
}

void writeFragmentHead(BoxWriter& writer, std::uint32_t sequenceNumber, std::span<const FragmentSample> samples,
                       std::int64_t end, std::span<const std::uint32_t> pictureSizes)
{
    std::size_t firstRun = 0;
    std::size_t picture = 0;
    std::uint32_t pictureOffset = 0; // offset of that picture in the mdat's content
    {
        const Box moof(writer, "moof");
        {
            const Box box(writer, "mfhd", 0, 0);
            writer.u32(sequenceNumber);
        }
        const Box traf(writer, "traf");
        {
            const Box box(writer, "tfhd", 0, kDefaultBaseIsMoof);
            writer.u32(kTrackId);
        }
        {
            const Box box(writer, "tfdt", 1, 0);
            writer.u64(static_cast<std::uint64_t>(samples.front().start));
        }
        firstRun = writer.size();
        // The samples of a run are contiguous, so that a repeated picture begins a new run.
        for (std::size_t i = 0; i < samples.size();) {
            const std::size_t first = i++;
            while (i < samples.size() && samples[i].picture == samples[i - 1].picture + 1)
                ++i;
            for (; picture < samples[first].picture; ++picture)
                pictureOffset += pictureSizes[picture];
            writeRun(writer, samples.subspan(first, i - first), i < samples.size() ? samples[i].start : end,
                     pictureSizes, pictureOffset);
        }
    }
    // Adjusts the runs' offsets to the start of the moof, whose size is now known.
    const auto moofSize = static_cast<std::uint32_t>(writer.size());
    for (std::size_t run = firstRun; run < moofSize; run += writer.u32At(run))
        writer.setU32At(run + kRunOffsetAt, writer.u32At(run + kRunOffsetAt) + moofSize + kMediaHeaderSize);
    for (; picture < pictureSizes.size(); ++picture)
        pictureOffset += pictureSizes[picture];
    writer.u32(kMediaHeaderSize + pictureOffset);
    writer.text("mdat");
}

} // namespace lumavex
