// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <span>
#include <system_error>
#include <utility>

namespace lumavex {

/// The error that the last system call of this thread left in errno.
std::error_code lastError();

/// An open file descriptor, closed by the destructor. Errors are the system's own; interrupted calls are repeated. One
/// thread at a time.
class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
    ~FileDescriptor();
    FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept;

    bool isOpen() const { return descriptor_ >= 0; }
    int get() const { return descriptor_; } ///< -1 when none is open
    /// Releases the descriptor without closing it.
    int release() { return std::exchange(descriptor_, -1); }
    /// Closes now. The descriptor is gone even on an error (a network file system may report a failed write only here).
    std::error_code close();

    std::error_code writeAll(std::span<const std::uint8_t> bytes, std::int64_t offset) const;
    /// A read of fewer bytes than requested (end of the file) is an error.
    std::error_code readAll(std::span<std::uint8_t> bytes, std::int64_t offset) const;
    std::error_code truncate(std::int64_t size) const;
    std::error_code flushToDisk() const;
    std::int64_t size() const; ///< -1 on an error

private:
    int descriptor_ = -1;
};

} // namespace lumavex
