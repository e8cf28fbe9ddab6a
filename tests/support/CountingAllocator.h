// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>

namespace lumavex {

/// Allocator use of all threads of this program, including libraries. Any thread.
struct MemoryUse {
    std::int64_t requests = 0; ///< number of new blocks and size changes so far
    std::int64_t bytes = 0;    ///< in use
};

/// False in builds whose sanitizer has its own allocator: then nothing is counted, and no call fails.
bool allocatorIsCounting();
MemoryUse memoryUse();
/// After this call no block can be resized beyond `bytes`.
void failReallocationsBeyond(std::size_t bytes);

} // namespace lumavex
