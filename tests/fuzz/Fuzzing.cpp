// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/fuzz/Fuzzing.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace lumavex {

MemoryFile::MemoryFile(const QByteArray& content) : file_(::memfd_create("fuzz", MFD_CLOEXEC))
{
    const auto size = static_cast<std::size_t>(content.size());
    require(file_ >= 0 && ::write(file_, content.constData(), size) == content.size(), "there is memory for a file");
}

MemoryFile::~MemoryFile()
{
    ::close(file_);
}

QString MemoryFile::path() const
{
    return QStringLiteral("/proc/self/fd/%1").arg(file_);
}

QByteArray MemoryFile::content() const
{
    struct stat status = {};
    require(::fstat(file_, &status) == 0, "the file has a size");
    QByteArray bytes(static_cast<qsizetype>(status.st_size), Qt::Uninitialized);
    require(::pread(file_, bytes.data(), static_cast<std::size_t>(bytes.size()), 0) == bytes.size(),
            "the file can be read");
    return bytes;
}

} // namespace lumavex
