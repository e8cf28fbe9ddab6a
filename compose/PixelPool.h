// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace lumavex {

/// Memory for frames of one size. Blocks return to the pool when they are released, from any thread, even after the
/// pool's owner has gone; a change of size frees the old ones.
class PixelPool : public std::enable_shared_from_this<PixelPool> {
public:
    class Block;

    static std::shared_ptr<PixelPool> create() { return std::shared_ptr<PixelPool>(new PixelPool); }
    ~PixelPool();
    PixelPool(const PixelPool&) = delete;
    PixelPool& operator=(const PixelPool&) = delete;

    /// A block for this many pixels: the idle one that holds the newest frame, or a new one. Null when there is no
    /// memory. Release it with `release`.
    Block* take(std::size_t pixels);
    static std::uint32_t* pixelsOf(Block* block);
    /// The number of the frame that the block holds, set by its user; 0 for none. Kept while the block is idle.
    static std::uint64_t frameOf(const Block* block);
    static void setFrame(Block* block, std::uint64_t number);
    static void release(Block* block);

    /// Number of blocks that are not in use.
    std::size_t idleBlocks() const;

private:
    PixelPool() = default;
    static void destroy(Block* block);

    mutable std::mutex mutex_;
    std::size_t pixels_ = 0;
    std::vector<Block*> idle_;
};

} // namespace lumavex
