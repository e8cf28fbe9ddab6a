// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/CountingAllocator.h"

#include <atomic>
#include <cerrno>
#include <limits>
#include <malloc.h>

namespace {

std::atomic<std::int64_t> requests = 0;
std::atomic<std::int64_t> bytesInUse = 0;
std::atomic<std::size_t> largestReallocation = std::numeric_limits<std::size_t>::max();

} // namespace

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

extern "C" {

// The names under which the GNU C library exports its own allocator for replacements.
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void __libc_free(void* block);

void* malloc(std::size_t size)
{
    void* const block = __libc_malloc(size);
    ++requests;
    bytesInUse += static_cast<std::int64_t>(malloc_usable_size(block));
    return block;
}

void* calloc(std::size_t count, std::size_t size)
{
    void* const block = __libc_calloc(count, size);
    ++requests;
    bytesInUse += static_cast<std::int64_t>(malloc_usable_size(block));
    return block;
}

void* realloc(void* block, std::size_t size)
{
    if (size > largestReallocation) {
        errno = ENOMEM;
        return nullptr;
    }
    const auto before = static_cast<std::int64_t>(malloc_usable_size(block));
    void* const moved = __libc_realloc(block, size);
    ++requests;
    if (moved || size == 0)
        bytesInUse += static_cast<std::int64_t>(malloc_usable_size(moved)) - before;
    return moved;
}

void free(void* block)
{
    bytesInUse -= static_cast<std::int64_t>(malloc_usable_size(block));
    __libc_free(block);
}

} // extern "C"

namespace lumavex {
bool allocatorIsCounting()
{
    return true;
}
} // namespace lumavex

#else

namespace lumavex {
bool allocatorIsCounting()
{
    return false;
}
} // namespace lumavex

#endif

namespace lumavex {

MemoryUse memoryUse()
{
    return {requests, bytesInUse};
}

void failReallocationsBeyond(std::size_t bytes)
{
    largestReallocation = bytes;
}

} // namespace lumavex
