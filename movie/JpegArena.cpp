// SPDX-License-Identifier: GPL-3.0-or-later
#include "movie/JpegArena.h"

#include <algorithm>
#include <cstdint>
#include <new>

#include <jerror.h>

namespace lumavex {

namespace {

constexpr std::size_t kAlignment = 64; // for the widest vector instructions
constexpr std::size_t kLeastBlock = 64 * 1024;

std::size_t roundUp(std::size_t size)
{
    return (size + kAlignment - 1) / kAlignment * kAlignment;
}

JpegArena& arenaOf(j_common_ptr common)
{
    return *static_cast<JpegArena*>(common->client_data);
}

} // namespace

void JpegArena::serve(jpeg_compress_struct& compress)
{
    jpeg_memory_mgr& memory = *compress.mem;
    allocateAnew_ = memory.alloc_small;
    allocateSamplesAnew_ = memory.alloc_sarray;
    freePoolForGood_ = memory.free_pool;
    memory.alloc_small = allocate;
    memory.alloc_large = allocate;
    memory.alloc_sarray = allocateSamples;
    memory.free_pool = freePool;
}

void* JpegArena::acquire(std::size_t size)
{
    size = roundUp(size);
    for (; current_ < blocks_.size(); ++current_) {
        JpegBuffer& block = blocks_[current_];
        const std::size_t taken = block.bytes().size();
        if (block.capacity() - taken < size + kAlignment)
            continue;
        block.setSize(taken + size);
        const auto start = roundUp(reinterpret_cast<std::uintptr_t>(block.data()));
        return reinterpret_cast<void*>(start + taken); // NOLINT(performance-no-int-to-ptr)
    }
    JpegBuffer block;
    if (!block.grow(std::max(size + kAlignment, kLeastBlock)))
        return nullptr;
    try {
        blocks_.push_back(std::move(block));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
    return acquire(size);
}

void* JpegArena::allocate(j_common_ptr common, int pool, std::size_t size)
{
    JpegArena& self = arenaOf(common);
    if (pool != JPOOL_IMAGE)
        return self.allocateAnew_(common, pool, size);
    void* const memory = self.acquire(size);
    if (!memory)
        ERREXIT1(common, JERR_OUT_OF_MEMORY, 0);
    return memory;
}

// The library's vector code reads and writes whole vectors, past the ends of rows.
JSAMPARRAY JpegArena::allocateSamples(j_common_ptr common, int pool, JDIMENSION perRow, JDIMENSION rows)
{
    if (pool != JPOOL_IMAGE)
        return arenaOf(common).allocateSamplesAnew_(common, pool, perRow, rows);
    const std::size_t rowBytes = roundUp(perRow) + kAlignment;
    auto* const array = static_cast<JSAMPARRAY>(allocate(common, pool, rows * sizeof(JSAMPROW)));
    auto* const samples = static_cast<JSAMPROW>(allocate(common, pool, rows * rowBytes));
    for (JDIMENSION row = 0; row < rows; ++row)
        array[row] = samples + row * rowBytes;
    return array;
}

void JpegArena::freePool(j_common_ptr common, int pool)
{
    JpegArena& self = arenaOf(common);
    if (pool == JPOOL_IMAGE) {
        for (JpegBuffer& block : self.blocks_)
            block.setSize(0);
        self.current_ = 0;
    }
    self.freePoolForGood_(common, pool);
}

} // namespace lumavex
