// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/FileDescriptor.h"

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace lumavex {

std::error_code lastError()
{
    return {errno, std::generic_category()};
}

FileDescriptor::~FileDescriptor()
{
    if (descriptor_ >= 0)
        ::close(descriptor_);
}

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept
{
    std::swap(descriptor_, other.descriptor_);
    return *this;
}

std::error_code FileDescriptor::close()
{
    return ::close(release()) == 0 ? std::error_code{} : lastError();
}

std::error_code FileDescriptor::writeAll(std::span<const std::uint8_t> bytes, std::int64_t offset) const
{
    while (!bytes.empty()) {
        const ssize_t written = ::pwrite(descriptor_, bytes.data(), bytes.size(), offset);
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            return lastError();
        if (written == 0)
            return std::make_error_code(std::errc::io_error);
        bytes = bytes.subspan(static_cast<std::size_t>(written));
        offset += written;
    }
    return {};
}

std::error_code FileDescriptor::readAll(std::span<std::uint8_t> bytes, std::int64_t offset) const
{
    while (!bytes.empty()) {
        const ssize_t count = ::pread(descriptor_, bytes.data(), bytes.size(), offset);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return lastError();
        if (count == 0)
            return std::make_error_code(std::errc::io_error);
        bytes = bytes.subspan(static_cast<std::size_t>(count));
        offset += count;
    }
    return {};
}

std::error_code FileDescriptor::truncate(std::int64_t size) const
{
    while (::ftruncate(descriptor_, size) != 0) {
        if (errno != EINTR)
            return lastError();
    }
    return {};
}

std::error_code FileDescriptor::flushToDisk() const
{
    while (::fsync(descriptor_) != 0) {
        if (errno != EINTR)
            return lastError();
    }
    return {};
}

std::int64_t FileDescriptor::size() const
{
    struct stat status = {};
    return ::fstat(descriptor_, &status) == 0 ? std::int64_t{status.st_size} : -1;
}

} // namespace lumavex
