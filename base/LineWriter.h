// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/FileDescriptor.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <system_error>

namespace lumavex {

/// Writes text to a file on a thread of its own, so that a reader who does not read holds up nobody but that thread:
/// one of a full pipe, a stopped terminal, or a FIFO that nobody has opened. Any thread, but one for making and
/// destroying.
class LineWriter {
public:
    /// `open` is called once, on the writer's thread and only when there is something to write; it sets errno when it
    /// fails.
    explicit LineWriter(std::function<FileDescriptor()> open);
    explicit LineWriter(FileDescriptor file);
    /// What has not been written by then is given up.
    ~LineWriter();
    LineWriter(const LineWriter&) = delete;
    LineWriter& operator=(const LineWriter&) = delete;

    enum class Room { Bounded, Always };
    /// Does not wait. False when more than 64 KiB wait to be written already and room is bounded: the text is left out.
    bool add(std::string text, Room room = Room::Bounded);
    bool isIdle() const; ///< nothing waits to be written
    /// Waits until everything is written or could not be, no longer than that. False when something still waits.
    bool waitUntilIdle(std::chrono::milliseconds patience) const;
    std::error_code error() const; ///< of the latest text that could not be written

private:
    struct Shared;
    static void run(const std::shared_ptr<Shared>& shared);

    std::shared_ptr<Shared>
        shared_; ///< the thread's too: one that hangs in a call of the system's outlives this object
};

} // namespace lumavex
