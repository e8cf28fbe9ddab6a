// SPDX-License-Identifier: GPL-3.0-or-later
#include "compose/PixelPool.h"

#include <algorithm>
#include <new>
#include <utility>

namespace lumavex {

/// Header in front of the pixels, in the same allocation.
class alignas(64) PixelPool::Block {
public:
    std::shared_ptr<PixelPool> pool; ///< set while in use
    std::size_t pixels = 0;
    std::uint64_t frame = 0;
};

PixelPool::~PixelPool()
{
    for (Block* block : idle_)
        destroy(block);
}

PixelPool::Block* PixelPool::take(std::size_t pixels)
{
    const std::lock_guard lock(mutex_);
    if (pixels_ != pixels) {
        for (Block* block : idle_)
            destroy(block);
        idle_.clear();
        pixels_ = pixels;
    }
    Block* block = nullptr;
    if (!idle_.empty()) {
        const auto youngest = std::ranges::max_element(idle_, {}, [](const Block* idle) { return idle->frame; });
        block = *youngest;
        idle_.erase(youngest);
    } else {
        void* memory = ::operator new (sizeof(Block) + pixels * sizeof(std::uint32_t), std::align_val_t{alignof(Block)},
                                       std::nothrow);
        if (!memory)
            return nullptr;
        block = new (memory) Block;
        block->pixels = pixels;
    }
    block->pool = shared_from_this();
    return block;
}

std::uint32_t* PixelPool::pixelsOf(Block* block)
{
    return reinterpret_cast<std::uint32_t*>(block + 1);
}

std::uint64_t PixelPool::frameOf(const Block* block)
{
    return block->frame;
}

void PixelPool::setFrame(Block* block, std::uint64_t number)
{
    block->frame = number;
}

void PixelPool::release(Block* block)
{
    const std::shared_ptr<PixelPool> pool = std::move(block->pool); // keeps the pool alive until the lock is released
    const std::lock_guard lock(pool->mutex_);
    if (block->pixels == pool->pixels_)
        pool->idle_.push_back(block);
    else
        destroy(block);
}

std::size_t PixelPool::idleBlocks() const
{
    const std::lock_guard lock(mutex_);
    return idle_.size();
}

void PixelPool::destroy(Block* block)
{
    block->~Block();
    ::operator delete (block, std::align_val_t{alignof(Block)});
}

} // namespace lumavex
