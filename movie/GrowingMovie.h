// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/FileDescriptor.h"
#include "movie/Mp4Boxes.h"

#include <cstdint>

namespace lumavex {

enum class MovieKind {
    Growing,  ///< begins as HybridMp4File begins one, and was never finished
    Finished, ///< an ordinary file that HybridMp4File finished
    Foreign,  ///< anything else
};

struct GrowingMovie {
    MovieKind kind = MovieKind::Foreign;
    MovieTrack track;          ///< this and the rest of a growing movie alone
    SampleTable table;         ///< of the fragments that are wholly in the file
    std::int64_t mediaEnd = 0; ///< where the last of them ends, bytes
};

/// Reads what HybridMp4File wrote. A file that differs in its first bytes is foreign; behind them reading ends at the
/// first box that is not a complete fragment.
GrowingMovie readGrowingMovie(const FileDescriptor& file);

} // namespace lumavex
