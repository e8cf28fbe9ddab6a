// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MovieWriter.h"

#include <QSemaphore>

#include <chrono>
#include <cstdint>
#include <mutex>

namespace lumavex {

/// What ended a wait for the writer.
enum class Readiness {
    Ready,  ///< the input takes a frame
    Failed, ///< the writer has an error; its input may never be ready again
};

/// The hand-shake through which the main thread waits until a writer's input takes more. One object per recording; it
/// observes the input from its making to its end, and the writer must outlive it.
///
/// No change of readiness is missed: the waiter first announces itself under the lock and only then looks at the input,
/// so an input that becomes ready after that look finds the announcement. No lock is held while the input is asked.
class WriterReadiness {
public:
    /// A writer that fails while its queue is full tells nobody, so a waiter looks up every `lookUp`; readiness itself
    /// does not depend on that.
    explicit WriterReadiness(MovieWriter& writer, std::chrono::milliseconds lookUp = std::chrono::milliseconds(50));
    ~WriterReadiness(); ///< no call of the observer is in flight when it returns
    WriterReadiness(const WriterReadiness&) = delete;
    WriterReadiness& operator=(const WriterReadiness&) = delete;

    /// Main thread. Blocks until the input is ready or the writer has failed.
    Readiness waitUntilReady();

private:
    void readyForMoreMediaData(); ///< the observer, on a thread of the writer's

    MovieWriter& assetWriter_;
    const std::chrono::milliseconds lookUp_;
    std::mutex lock_;
    std::int8_t isWaitingForInputReady = 0; ///< 1 while the main thread is blocked; under lock_
    QSemaphore writeSemaphore{0};
};

} // namespace lumavex
