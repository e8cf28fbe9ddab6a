// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/FileDescriptor.h"
#include "movie/GrowingMovie.h"
#include "movie/HybridMp4File.h"
#include "movie/JpegMovieWriter.h"
#include "movie/MovieText.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>

namespace lumavex {

QString repairMovie(const QString& path)
{
    FileDescriptor file(::open(QFile::encodeName(path).constData(), O_RDWR | O_NOFOLLOW | O_CLOEXEC));
    if (!file.isOpen())
        return MovieText::tr("The movie cannot be opened: %1.").arg(qt_error_string(errno));
    GrowingMovie movie = readGrowingMovie(file);
    switch (movie.kind) {
    case MovieKind::Finished:
        return {};
    case MovieKind::Foreign:
        return MovieText::tr("The file is not a movie of this program.");
    case MovieKind::Growing:
        break;
    }
    if (movie.table.count() == 0)
        return MovieText::tr("The movie holds no frames.");
    HybridMp4File completed;
    const std::int64_t end = movie.table.end();
    std::error_code error = completed.adopt(std::move(file), movie.track, std::move(movie.table), movie.mediaEnd);
    if (!error)
        error = completed.finish(end);
    return error ? MovieText::cannotWrite(error) : QString();
}

} // namespace lumavex
