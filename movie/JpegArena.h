// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "movie/JpegBuffer.h"

#include <cstddef>
#include <cstdio>
#include <vector>

#include <jpeglib.h>

namespace lumavex {

/// Keeps the memory that the JPEG library needs for one picture for the next; the library would allocate it anew each
/// time. The library manages memory that serves all pictures itself. One thread at a time.
class JpegArena {
public:
    JpegArena() = default;
    JpegArena(const JpegArena&) = delete;
    JpegArena& operator=(const JpegArena&) = delete;

    /// Serves a compressor whose client_data points to this object. Call it once, right after creating the compressor.
    void serve(jpeg_compress_struct& compress);

protected:
    ~JpegArena() = default;

private:
    static void* allocate(j_common_ptr common, int pool, std::size_t size);
    static JSAMPARRAY allocateSamples(j_common_ptr common, int pool, JDIMENSION perRow, JDIMENSION rows);
    static void freePool(j_common_ptr common, int pool);

    void* acquire(std::size_t size); ///< null when there is no memory

    /// The library's own functions.
    decltype(jpeg_memory_mgr::alloc_small) allocateAnew_ = nullptr;
    decltype(jpeg_memory_mgr::alloc_sarray) allocateSamplesAnew_ = nullptr;
    decltype(jpeg_memory_mgr::free_pool) freePoolForGood_ = nullptr;

    std::vector<JpegBuffer> blocks_; ///< the size of each is the part in use
    std::size_t current_ = 0;        ///< the block that allocations come from
};

} // namespace lumavex
