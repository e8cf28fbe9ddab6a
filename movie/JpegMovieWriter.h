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
/// Times are rounded to ticks of the movie's timescale (Mp4Boxes.h). A time less than a tick, or more than thirteen
/// hours, after the previous one is refused. The finishing handler must not destroy the writer.
std::unique_ptr<MovieWriter> createJpegMovieWriter(const QString& path, const MovieWriterSettings& settings);

/// See MovieRepair. Leaves a finished file unchanged. A file that has no frames, or that these writers did not make, is
/// an error and stays unchanged, too. Drops a frame that a kill has torn.
QString repairMovie(const QString& path);

} // namespace lumavex
