// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/FileDescriptor.h"
#include "movie/Mp4Boxes.h"

#include <cstdint>

namespace lumavex {

enum class MovieKind {
    Growing,  ///< begins like a file of HybridMp4File and was never finished
    Finished, ///< an ordinary file that HybridMp4File finished
    Foreign,  ///< anything else
};

struct GrowingMovie {
    MovieKind kind = MovieKind::Foreign;
    MovieTrack track;          ///< this and the members below: only for a growing movie
    SampleTable table;         ///< samples of the complete fragments
    std::int64_t mediaEnd = 0; ///< end of the last complete fragment, bytes
};

/// Reads a file that HybridMp4File wrote. A file with a different head is foreign; after the head, reading ends at the
/// first box that is not a complete fragment.
GrowingMovie readGrowingMovie(const FileDescriptor& file);

} // namespace lumavex
