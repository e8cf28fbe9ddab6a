// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>

namespace lumavex {

/// What all threads of this program have asked of the allocator, libraries included. Any thread.
struct MemoryUse {
    std::int64_t requests = 0; ///< new blocks and changed sizes so far
    std::int64_t bytes = 0;    ///< in use
};

/// False in builds whose sanitizer has an allocator of its own: then nothing is counted, and nothing fails.
bool allocatorIsCounting();
MemoryUse memoryUse();
/// From now on no block can be grown beyond `bytes`.
void failReallocationsBeyond(std::size_t bytes);

} // namespace lumavex
