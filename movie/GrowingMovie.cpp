// SPDX-License-Identifier: GPL-3.0-or-later
#include "movie/GrowingMovie.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <vector>

namespace lumavex {

namespace {

constexpr std::int64_t kLargestMoof = 64 << 20; // far more than is ever written

/// Reads big-endian numbers from the front of bytes. Past the end it returns zeros, and good() is false.
class BoxReader {
public:
    explicit BoxReader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    std::uint32_t u32()
    {
        if (bytes_.size() < 4) {
            good_ = false;
            return 0;
        }
        std::uint32_t value = 0;
        for (const std::uint8_t byte : bytes_.first(4))
            value = value << 8 | byte;
        bytes_ = bytes_.subspan(4);
        return value;
    }
    std::uint64_t u64()
    {
        const std::uint64_t high = u32();
        return high << 32 | u32();
    }
    bool is(std::string_view name)
    {
        const std::uint32_t value = u32();
        std::uint32_t wanted = 0;
        for (const char character : name)
            wanted = wanted << 8 | static_cast<std::uint8_t>(character);
        return good_ && value == wanted;
    }
    void skip(std::size_t count)
    {
        good_ = good_ && bytes_.size() >= count;
        bytes_ = bytes_.subspan(std::min(count, bytes_.size()));
    }
    bool good() const { return good_; }
    bool atEnd() const { return bytes_.empty(); }

private:
    std::span<const std::uint8_t> bytes_;
    bool good_ = true;
};

struct BoxHeader {
    std::int64_t size = 0;
    std::array<char, 4> name{};
    std::string_view type() const { return {name.data(), name.size()}; }
};

std::optional<BoxHeader> readHeader(const FileDescriptor& file, std::int64_t offset)
{
    std::array<std::uint8_t, 8> bytes{};
    if (file.readAll(bytes, offset))
        return std::nullopt;
    BoxHeader header;
    header.size = BoxReader(bytes).u32();
    std::copy_n(bytes.begin() + 4, 4, header.name.begin());
    return header;
}

// Offset of a track property in the head of any movie, found by comparing two heads that differ only in this property.
template <typename Change>
std::size_t firstDifference(Change change)
{
    MovieTrack other;
    change(other);
    const auto plain = growingHead({}).bytes;
    const auto changed = growingHead(other).bytes;
    return static_cast<std::size_t>(std::mismatch(plain.begin(), plain.end(), changed.begin()).first - plain.begin());
}

// Compares the whole head with the one that its properties produce, so that no foreign file is ever changed.
std::optional<MovieTrack> readHead(const FileDescriptor& file, std::size_t& headSize)
{
    const GrowingHead plain = growingHead({});
    headSize = plain.bytes.size();
    std::vector<std::uint8_t> bytes(headSize);
    if (file.readAll(bytes, 0))
        return std::nullopt;
    const auto at = [&bytes](std::size_t offset) { return BoxReader(std::span(bytes).subspan(offset)); };
    MovieTrack track;
    track.creationTime = at(firstDifference([](MovieTrack& t) { t.creationTime = std::uint64_t{1} << 63; })).u64();
    track.width = static_cast<int>(at(firstDifference([](MovieTrack& t) { t.width = 0xFF00; })).u32() >> 16);
    track.height = static_cast<int>(at(firstDifference([](MovieTrack& t) { t.height = 0xFF00; })).u32() >> 16);
    track.timescale =
        static_cast<std::int32_t>(at(firstDifference([](MovieTrack& t) { t.timescale = 0x7F000000; })).u32());
    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(plain.durationOffset), sizeof(std::uint64_t), 0);
    return track.timescale > 0 && bytes == growingHead(track).bytes ? std::optional(track) : std::nullopt;
}

bool isFinished(const FileDescriptor& file)
{
    std::vector<std::uint8_t> expected = finishedHead(0);
    std::vector<std::uint8_t> bytes(expected.size());
    if (file.readAll(bytes, 0))
        return false;
    const std::size_t mediaStart = bytes.size() - 16;
    const auto mediaSize = static_cast<std::int64_t>(BoxReader(std::span(bytes).last(8)).u64());
    if (mediaSize < 16 || !std::equal(bytes.begin(), bytes.end() - 8, expected.begin()))
        return false;
    const auto moov = readHeader(file, static_cast<std::int64_t>(mediaStart) + mediaSize);
    return moov && moov->type() == "moov";
}

/// Extent of a fragment in the file, moof and mdat together.
struct Extent {
    std::int64_t start = 0;
    std::int64_t end = 0;
};

// Reads one trun.
bool readRun(BoxReader& reader, const Extent& extent, std::int64_t& start, std::vector<MovieSample>& samples)
{
    reader.skip(4); // version and flags
    const std::uint32_t count = reader.u32();
    std::int64_t offset = extent.start + reader.u32();
    for (std::uint32_t i = 0; i < count && reader.good(); ++i) {
        const std::uint32_t duration = reader.u32();
        const std::uint32_t size = reader.u32();
        samples.push_back({start, offset, size});
        start += duration;
        offset += size;
        if (offset > extent.end || duration == 0)
            return false;
    }
    return reader.good();
}

// Appends the samples to the table only when the whole moof is valid.
bool readFragment(std::span<const std::uint8_t> moof, const Extent& extent, SampleTable& table)
{
    BoxReader reader(moof);
    reader.skip(8 + 16 + 8); // the headers of moof and traf, all of mfhd
    reader.skip(16);         // tfhd
    reader.skip(4);
    if (!reader.is("tfdt"))
        return false;
    reader.skip(4);
    auto start = static_cast<std::int64_t>(reader.u64());
    std::vector<MovieSample> fragment;
    while (reader.good() && !reader.atEnd()) {
        reader.skip(4);
        if (!reader.is("trun") || !readRun(reader, extent, start, fragment))
            return false;
    }
    const std::int64_t earliest = table.count() == 0 ? 0 : table.lastStart() + 1;
    if (!reader.good() || fragment.empty() || fragment.front().start < earliest
        || fragment.front().start > table.lastStart() + kLongestSample)
        return false;
    for (const MovieSample& sample : fragment)
        table.append(sample);
    table.setEnd(start);
    return true;
}

} // namespace

GrowingMovie readGrowingMovie(const FileDescriptor& file)
{
    GrowingMovie movie;
    if (isFinished(file)) {
        movie.kind = MovieKind::Finished;
        return movie;
    }
    std::size_t headSize = 0;
    const auto track = readHead(file, headSize);
    if (!track)
        return movie;
    movie.kind = MovieKind::Growing;
    movie.track = *track;
    movie.mediaEnd = static_cast<std::int64_t>(headSize);
    const std::int64_t fileSize = file.size();
    for (;;) {
        const auto moof = readHeader(file, movie.mediaEnd);
        if (!moof || moof->type() != "moof" || moof->size < 8 || moof->size > kLargestMoof)
            return movie;
        const auto mdat = readHeader(file, movie.mediaEnd + moof->size);
        if (!mdat || mdat->type() != "mdat" || mdat->size < 8)
            return movie;
        const Extent extent{movie.mediaEnd, movie.mediaEnd + moof->size + mdat->size};
        if (extent.end > fileSize)
            return movie;
        std::vector<std::uint8_t> bytes(static_cast<std::size_t>(moof->size));
        if (file.readAll(bytes, movie.mediaEnd) || !readFragment(bytes, extent, movie.table))
            return movie;
        movie.mediaEnd = extent.end;
    }
}

} // namespace lumavex
