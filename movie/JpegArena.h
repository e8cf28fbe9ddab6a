// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "movie/JpegBuffer.h"

#include <cstddef>
#include <cstdio>
#include <vector>

#include <jpeglib.h>

namespace lumavex {

/// The memory that the JPEG library takes for one picture, kept for the next: the library itself asks the system anew
/// each time. What it keeps for all pictures stays its own business. One thread at a time.
class JpegArena {
public:
    JpegArena() = default;
    JpegArena(const JpegArena&) = delete;
    JpegArena& operator=(const JpegArena&) = delete;

    /// Serves a compressor whose client_data points to this object. To be called once, right after its creation.
    void serve(jpeg_compress_struct& compress);

protected:
    ~JpegArena() = default;

private:
    static void* allocate(j_common_ptr common, int pool, std::size_t size);
    static JSAMPARRAY allocateSamples(j_common_ptr common, int pool, JDIMENSION perRow, JDIMENSION rows);
    static void freePool(j_common_ptr common, int pool);

    void* take(std::size_t size); ///< null when there is no memory

    /// How the library allocates and frees by itself.
    decltype(jpeg_memory_mgr::alloc_small) allocateAnew_ = nullptr;
    decltype(jpeg_memory_mgr::alloc_sarray) allocateSamplesAnew_ = nullptr;
    decltype(jpeg_memory_mgr::free_pool) freePoolForGood_ = nullptr;

    std::vector<JpegBuffer> blocks_; ///< their sizes say how much is taken
    std::size_t current_ = 0;        ///< the block that is being given out
};

} // namespace lumavex
