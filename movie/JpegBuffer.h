// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>

namespace lumavex {

/// Bytes that grow without being initialised and are reused for the next picture. Lack of memory is reported by a
/// result, not by an exception, since the buffer grows inside a C library.
class JpegBuffer {
public:
    std::uint8_t* data() { return bytes_.get(); }
    std::size_t capacity() const { return capacity_; }
    std::span<const std::uint8_t> bytes() const { return {bytes_.get(), size_}; }

    void setSize(std::size_t size) { size_ = size; }
    /// Keeps the content. False, with the buffer unchanged, when there is no memory.
    bool grow(std::size_t capacity)
    {
        if (capacity <= capacity_)
            return true;
        void* const grown = std::realloc(bytes_.get(), capacity);
        if (!grown)
            return false;
        static_cast<void>(bytes_.release());
        bytes_.reset(static_cast<std::uint8_t*>(grown));
        capacity_ = capacity;
        return true;
    }
    /// Like grow(), but with a reserve for further growth.
    bool makeRoom(std::size_t capacity) { return capacity <= capacity_ || grow(std::max(capacity, 2 * capacity_)); }

private:
    struct Free {
        void operator()(std::uint8_t* bytes) const { std::free(bytes); }
    };
    std::unique_ptr<std::uint8_t, Free> bytes_;
    std::size_t capacity_ = 0;
    std::size_t size_ = 0;
};

} // namespace lumavex
