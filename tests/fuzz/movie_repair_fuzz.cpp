// SPDX-License-Identifier: GPL-3.0-or-later
// Movies that a killed run left. A first byte of odd value puts the head of a growing movie before the input, so that
// the fragments behind it are reached.
#include "base/FileDescriptor.h"
#include "movie/GrowingMovie.h"
#include "movie/JpegMovieWriter.h"
#include "recording/RecordedFiles.h"
#include "tests/fuzz/Fuzzing.h"

#include <QFile>

#include <fcntl.h>

using namespace lumavex;

namespace {

GrowingMovie read(const MemoryFile& file)
{
    const FileDescriptor descriptor(::open(QFile::encodeName(file.path()).constData(), O_RDONLY | O_CLOEXEC));
    return readGrowingMovie(descriptor);
}

void checkSamples(const GrowingMovie& movie, qsizetype fileSize)
{
    require(movie.mediaEnd <= fileSize, "fragments end within the file");
    std::int64_t earliest = 0;
    for (const MovieSample& sample : movie.table.samples()) {
        require(sample.offset >= 0 && sample.offset + sample.size <= movie.mediaEnd, "samples lie within the media");
        require(sample.start >= earliest, "samples are in the order of their times");
        earliest = sample.start + 1;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    QByteArray bytes;
    if (input.byte() & 1U) {
        const std::vector<std::uint8_t> head = growingHead({64, 48, 1}).bytes;
        bytes = {reinterpret_cast<const char*>(head.data()), static_cast<qsizetype>(head.size())};
    }
    bytes += input.restAsText();
    const MemoryFile file(bytes);

    const GrowingMovie before = read(file);
    if (before.kind == MovieKind::Growing)
        checkSamples(before, bytes.size());
    const bool holdsFrames = movieHoldsFrames(file.path());
    require(holdsFrames || before.table.count() == 0, "a movie with frames is worth keeping");

    const QString trouble = repairMovie(file.path());
    if (before.kind != MovieKind::Growing || !trouble.isEmpty()) {
        require(file.content() == bytes, "what cannot or need not be completed is not touched");
        return 0;
    }
    require(read(file).kind == MovieKind::Finished, "a completed movie is an ordinary one");
    require(movieHoldsFrames(file.path()), "a completed movie holds frames");
    const QByteArray completed = file.content();
    require(repairMovie(file.path()).isEmpty() && file.content() == completed, "completing again changes nothing");
    return 0;
}
