// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MovieWriter.h"

#include <QSemaphore>

#include <chrono>
#include <cstdint>
#include <mutex>

namespace lumavex {

/// Result of a wait for the writer.
enum class Readiness {
    Ready,  ///< the input accepts a frame
    Failed, ///< the writer has an error; its input may never be ready again
};

/// The handshake by which the main thread waits until a writer's input accepts a frame. One object per recording; it
/// observes the input from construction to destruction, and the writer must outlive it.
///
/// No change of readiness is missed: the waiter first announces itself under the lock and only then checks the input,
/// so an input that becomes ready after that check finds the announcement. No lock is held during the check.
class WriterReadiness {
public:
    /// A writer that fails while its queue is full notifies nobody, so a waiter checks every `lookUp`; readiness itself
    /// does not depend on that.
    explicit WriterReadiness(MovieWriter& writer, std::chrono::milliseconds lookUp = std::chrono::milliseconds(50));
    ~WriterReadiness(); ///< no call of the observer is in progress when it returns
    WriterReadiness(const WriterReadiness&) = delete;
    WriterReadiness& operator=(const WriterReadiness&) = delete;

    /// Main thread. Blocks until the input is ready or the writer has failed.
    Readiness waitUntilReady();

private:
    void readyForMoreMediaData(); ///< the observer, on a writer thread

    MovieWriter& assetWriter_;
    const std::chrono::milliseconds lookUp_;
    std::mutex lock_;
    std::int8_t isWaitingForInputReady = 0; ///< 1 while the main thread is blocked; under lock_
    QSemaphore writeSemaphore{0};
};

} // namespace lumavex
