// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MovieWriter.h"

#include <QString>

#include <memory>

namespace lumavex {

/// A writer that encodes on every core and writes a file that survives a kill (HybridMp4File.h):
///
///     append ──► EncoderWorkers ──► FragmentQueue ──► HybridMp4File
///     (main)     (one per core)     (────── one file thread ──────)
///
/// Times are kept to the tick of the movie's timescale (Mp4Boxes.h); one that is not at least a tick after the previous
/// one, or more than thirteen hours, is refused. The finishing handler must not destroy the writer.
std::unique_ptr<MovieWriter> createJpegMovieWriter(const QString& path, const MovieWriterSettings& settings);

/// See MovieRepair. A finished file is left alone; one that holds no frames, or that is not one of these writers', is
/// an error and left alone too. A frame that a kill has torn is dropped.
QString repairMovie(const QString& path);

} // namespace lumavex
