// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>

/// Defined by each fuzz target: takes any bytes in, answers 0, and ends the program where a promise is broken. The name
/// is libFuzzer's; its main function or that of replay.cpp calls it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace lumavex {

/// Ends the program as a crash does, which is what a fuzzer looks for, unless the promise holds.
inline void require(bool holds, const char* promise)
{
    if (holds)
        return;
    std::fprintf(stderr, "broken promise: %s\n", promise);
    std::abort();
}

/// Takes an input apart from its front. Past the end there are zeros.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : bytes_(data, size) {}

    std::uint8_t byte()
    {
        if (bytes_.empty())
            return 0;
        const std::uint8_t value = bytes_.front();
        bytes_ = bytes_.subspan(1);
        return value;
    }
    std::span<const std::uint8_t> rest() const { return bytes_; }
    QByteArray restAsText() const
    {
        return {reinterpret_cast<const char*>(bytes_.data()), static_cast<qsizetype>(bytes_.size())};
    }

private:
    std::span<const std::uint8_t> bytes_;
};

/// A file with a path that lies in memory alone and goes with the object.
class MemoryFile {
public:
    explicit MemoryFile(const QByteArray& content);
    ~MemoryFile();
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    QString path() const;
    QByteArray content() const;

private:
    int file_ = -1;
};

} // namespace lumavex
