// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <unistd.h>
#include <utility>

namespace lumavex {

/// Owns an open file of the system; closes it at its end.
class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept
    {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~FileDescriptor()
    {
        if (descriptor_ >= 0)
            ::close(descriptor_);
    }

    bool isOpen() const { return descriptor_ >= 0; }
    int get() const { return descriptor_; }
    int release() { return std::exchange(descriptor_, -1); }

    /// Closes now; 0, or -1 with errno set (a network file system may report a failed write only here).
    int close() { return ::close(release()); }

private:
    int descriptor_ = -1;
};

} // namespace lumavex
