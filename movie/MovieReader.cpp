// SPDX-License-Identifier: GPL-3.0-or-later
#include "movie/MovieReader.h"

#include "base/FileDescriptor.h"
#include "movie/MovieText.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <span>
#include <string_view>

namespace lumavex {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::int64_t kLargestMoov = std::int64_t{1} << 30;    // a year of frames
constexpr std::uint64_t kMostPictures = std::uint64_t{1} << 25; // twelve days at 30 a second
constexpr std::int64_t kLargestOffset = std::int64_t{1} << 60;
constexpr std::size_t kPicturesLookedAt = 64;

/// Reads a big-endian number; zero when it extends past the end of `bytes`.
std::uint64_t numberAt(Bytes bytes, std::size_t offset, std::size_t size)
{
    if (offset > bytes.size() || size > bytes.size() - offset)
        return 0;
    std::uint64_t value = 0;
    for (const std::uint8_t byte : bytes.subspan(offset, size))
        value = value << 8 | byte;
    return value;
}

bool isAt(Bytes bytes, std::size_t offset, std::string_view name)
{
    return offset <= bytes.size() && name.size() <= bytes.size() - offset
           && std::equal(name.begin(), name.end(), bytes.begin() + static_cast<std::ptrdiff_t>(offset));
}

/// Contents, without headers, of the boxes of this name in `parent`. Boxes in a moov have 32-bit sizes.
std::vector<Bytes> boxes(Bytes parent, std::string_view name)
{
    std::vector<Bytes> found;
    while (parent.size() >= 8) {
        const auto size = static_cast<std::size_t>(numberAt(parent, 0, 4));
        if (size < 8 || size > parent.size())
            break;
        if (isAt(parent, 4, name))
            found.push_back(parent.subspan(8, size - 8));
        parent = parent.subspan(size);
    }
    return found;
}

/// Content of the first box at the end of a path of names; empty when there is none.
Bytes box(Bytes parent, std::initializer_list<std::string_view> path)
{
    for (const std::string_view name : path) {
        const std::vector<Bytes> found = boxes(parent, name);
        if (found.empty())
            return {};
        parent = found.front();
    }
    return parent;
}

std::vector<std::uint8_t> readMoov(const FileDescriptor& file)
{
    std::vector<std::uint8_t> moov;
    const std::int64_t end = file.size();
    for (std::int64_t position = 0; position + 16 <= end;) {
        std::array<std::uint8_t, 16> header{};
        if (file.readAll(header, position))
            break;
        auto size = static_cast<std::int64_t>(numberAt(header, 0, 4));
        if (size == 1)
            size = static_cast<std::int64_t>(numberAt(header, 8, 8));
        if (size < 8 || size > end - position)
            break;
        if (isAt(header, 4, "moov") && size <= kLargestMoov) {
            moov.resize(static_cast<std::size_t>(size) - 8);
            if (file.readAll(moov, position + 8))
                moov.clear();
            break;
        }
        position += size;
    }
    return moov;
}

struct Place {
    std::int64_t offset = 0;
    std::int64_t size = 0;
};

/// The sample tables of one track.
class Track {
public:
    explicit Track(Bytes trak)
        : header_(box(trak, {"mdia", "mdhd"})), handler_(box(trak, {"mdia", "hdlr"})),
          tables_(box(trak, {"mdia", "minf", "stbl"}))
    {
    }

    bool is(std::string_view handler) const { return isAt(handler_, 8, handler); }

    MovieFacts::Track facts() const
    {
        const bool wide = numberAt(header_, 0, 1) == 1; // version
        const std::uint64_t timescale = numberAt(header_, wide ? 20 : 12, 4);
        const std::uint64_t duration = numberAt(header_, wide ? 24 : 16, wide ? 8 : 4);
        return {static_cast<std::int64_t>(sampleCount()),
                timescale > 0 ? static_cast<double>(duration) / static_cast<double>(timescale) : 0.0};
    }

    /// Positions of all samples; empty when the tables contradict each other. Not for sound, whose every frame is a
    /// sample.
    std::vector<Place> places() const
    {
        std::vector<Place> found;
        const Bytes runs = box(tables_, {"stsc"});
        const std::uint64_t runCount = std::min<std::uint64_t>(numberAt(runs, 4, 4), runs.size() / 12);
        const std::size_t count = sampleCount();
        if (count > kMostPictures)
            return found;
        for (std::uint64_t chunk = 0, run = 0; chunk < chunkCount() && found.size() < count; ++chunk) {
            while (run + 1 < runCount && numberAt(runs, 8 + 12 * (run + 1), 4) <= chunk + 1)
                ++run;
            std::int64_t offset = chunkOffset(chunk);
            const std::uint64_t samples = numberAt(runs, 8 + 12 * run + 4, 4);
            for (std::uint64_t i = 0; i < samples && found.size() < count; ++i) {
                const std::int64_t size = sizeOf(found.size());
                found.push_back({offset, size});
                offset += size;
            }
        }
        return found.size() == count ? found : std::vector<Place>();
    }

    std::int64_t lastChunkOffset() const { return chunkCount() > 0 ? chunkOffset(chunkCount() - 1) : kLargestOffset; }

private:
    Bytes narrowOffsets() const { return box(tables_, {"stco"}); }
    Bytes wideOffsets() const { return box(tables_, {"co64"}); }
    std::uint64_t chunkCount() const
    {
        const Bytes narrow = narrowOffsets();
        const Bytes wide = wideOffsets();
        return narrow.empty() ? std::min<std::uint64_t>(numberAt(wide, 4, 4), wide.size() / 8)
                              : std::min<std::uint64_t>(numberAt(narrow, 4, 4), narrow.size() / 4);
    }
    std::int64_t chunkOffset(std::uint64_t chunk) const
    {
        const Bytes narrow = narrowOffsets();
        const std::uint64_t offset =
            narrow.empty() ? numberAt(wideOffsets(), 8 + 8 * chunk, 8) : numberAt(narrow, 8 + 4 * chunk, 4);
        return static_cast<std::int64_t>(std::min<std::uint64_t>(offset, kLargestOffset));
    }
    std::size_t sampleCount() const
    {
        // Each sample has its own size, or all have the same.
        const std::uint64_t count = numberAt(sizes_, 8, 4);
        return static_cast<std::size_t>(
            numberAt(sizes_, 4, 4) != 0 ? count : std::min<std::uint64_t>(count, sizes_.size() / 4));
    }
    std::int64_t sizeOf(std::size_t sample) const
    {
        const std::uint64_t common = numberAt(sizes_, 4, 4);
        return static_cast<std::int64_t>(common != 0 ? common : numberAt(sizes_, 12 + 4 * sample, 4));
    }

    Bytes header_;
    Bytes handler_;
    Bytes tables_;
    Bytes sizes_ = box(tables_, {"stsz"});
};

bool isPicture(const FileDescriptor& file, const Place& place)
{
    std::array<std::uint8_t, 2> begin{};
    std::array<std::uint8_t, 2> end{};
    return place.size >= 4 && !file.readAll(begin, place.offset) && !file.readAll(end, place.offset + place.size - 2)
           && begin == std::array<std::uint8_t, 2>{0xFF, 0xD8} && end == std::array<std::uint8_t, 2>{0xFF, 0xD9};
}

bool picturesAreThere(const FileDescriptor& file, const std::vector<Place>& places)
{
    if (places.empty())
        return false;
    for (std::size_t i = 0; i < kPicturesLookedAt; ++i)
        if (!isPicture(file, places[i * (places.size() - 1) / (kPicturesLookedAt - 1)]))
            return false;
    const auto lastEnd = std::max_element(places.begin(), places.end(), [](const Place& a, const Place& b) {
        return a.offset + a.size < b.offset + b.size;
    });
    return lastEnd->offset + lastEnd->size <= file.size();
}

} // namespace

MovieFacts readMovie(const QString& path)
{
    MovieFacts facts;
    const FileDescriptor file(::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC));
    if (!file.isOpen()) {
        facts.error = MovieText::tr("The movie cannot be opened: %1.").arg(qt_error_string(errno));
        return facts;
    }
    const std::vector<std::uint8_t> moov = readMoov(file);
    if (moov.empty()) {
        facts.error = MovieText::tr("The movie is not complete.");
        return facts;
    }
    for (const Bytes trak : boxes(moov, "trak")) {
        const Track track(trak);
        const bool picture = track.is("vide");
        if (picture)
            facts.picture = track.facts();
        else if (track.is("soun"))
            facts.sound = track.facts();
        else
            continue;
        const bool there = picture ? picturesAreThere(file, track.places()) : track.lastChunkOffset() < file.size();
        if (!there)
            facts.error = MovieText::tr("Some of the movie's data are missing.");
    }
    return facts;
}

} // namespace lumavex
