// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/FileDescriptor.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <system_error>

namespace lumavex {

/// Writes text to a file on its own thread, so that a reader that does not read (a full pipe, a stopped terminal, a
/// FIFO that nobody has opened) blocks only that thread. Any thread may call it; one thread constructs and destroys it.
class LineWriter {
public:
    /// `open` is called once, on the writer's thread, before the first text is written; it sets errno when it fails.
    explicit LineWriter(std::function<FileDescriptor()> open);
    explicit LineWriter(FileDescriptor file);
    /// Discards text that is not yet written.
    ~LineWriter();
    LineWriter(const LineWriter&) = delete;
    LineWriter& operator=(const LineWriter&) = delete;

    enum class Room { Bounded, Always };
    /// Does not wait. Returns false and drops the text when `room` is Bounded and more than 64 KiB are queued already.
    bool add(std::string text, Room room = Room::Bounded);
    bool isIdle() const; ///< nothing is queued or being written
    /// Waits at most `patience` until all text is written or has failed. False when text is still queued.
    bool waitUntilIdle(std::chrono::milliseconds patience) const;
    std::error_code error() const; ///< error of the latest text that could not be written

private:
    struct Shared;
    static void run(const std::shared_ptr<Shared>& shared);

    std::shared_ptr<Shared>
        shared_; ///< shared with the thread, which may hang in a system call and outlive this object
};

} // namespace lumavex
