// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "movie/JpegRows.h"
#include "platform/MovieWriter.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <thread>
#include <vector>

namespace lumavex {

class JpegEncoder;

/// A bounded queue of frames that several threads encode and that returns them in the order of their arrival:
///
///     encode, repeat ──► ring of slots ──► take          (one thread puts in, one thread takes out)
///                          ▲ │ pixels
///                     JPEG │ ▼
///                     worker threads
///
/// Encodes only the requested rows, in strips that the workers share: no strip waits for another strip or frame. The
/// consumer joins the strips in order. A frame's pixel buffer is released, on a worker's thread, as soon as it is
/// encoded. Buffers of JPEG bytes are reused: the consumer gives them back. In the long run nothing is allocated.
class EncoderWorkers {
public:
    struct Frame {
        std::int64_t start = 0;        ///< as passed to encode() or repeat()
        std::vector<JpegStrip> strips; ///< ascending, not overlapping; none for a repetition of the previous frame
        bool failed = false;           ///< true when the frame could not be encoded
    };
    enum class Taken { Frame, TimedOut, NoMore };
    enum class Rest { Keep, Discard };

    /// Starts one thread per core, up to a limit.
    EncoderWorkers();
    /// Discards the remaining frames and ends the threads.
    ~EncoderWorkers();
    EncoderWorkers(const EncoderWorkers&) = delete;
    EncoderWorkers& operator=(const EncoderWorkers&) = delete;

    /// Queues `runs` (at least one; ascending, not overlapping). Returns false and does nothing when the queue is full
    /// or closed.
    bool encode(CVPixelBufferRef pixels, std::span<const MacroblockRows> runs, std::int64_t start);
    bool repeat(std::int64_t start);
    /// Accepts no more frames. Queued frames can still be taken, or are discarded.
    void close(Rest rest);

    bool isReady() const;       ///< any thread
    std::size_t queued() const; ///< frames put in and not yet taken; any thread
    /// `becameReady` is called on the consumer's or a worker's thread, without a lock of the queue held. When this
    /// returns, the previous observer is not running and is not called again. The observer must not call this.
    void observeReadiness(std::function<void()> becameReady);

    /// Waits for the next frame until `deadline`. NoMore once the queue is closed and empty, or its frames are
    /// discarded. Discards the previous content of `frame` and reuses its memory.
    Taken take(Frame& frame, std::chrono::steady_clock::time_point deadline);
    std::unique_ptr<JpegRows> spare();             ///< never null; the content is undefined
    void giveBack(std::unique_ptr<JpegRows> jpeg); ///< null is allowed

private:
    struct Slot {
        Frame frame;
        CVPixelBufferRef pixels;   ///< released when the last strip begins
        std::size_t begun = 0;     ///< strips begun
        std::size_t unencoded = 0; ///< strips not yet encoded
    };

    bool isReadyLocked() const;
    std::unique_ptr<JpegRows> spareLocked();
    Slot* nextToEncode();
    Slot& put(std::int64_t start);
    void work();
    void encodeStrip(JpegEncoder& encoder, Slot& slot, std::unique_lock<std::mutex>& lock);
    void notifyIfBecameReady(std::unique_lock<std::mutex>& lock);

    const std::size_t mostUnencoded_;

    mutable std::mutex mutex_; ///< guards everything down to observerMutex_
    std::condition_variable toEncode_;
    std::condition_variable toTake_;
    std::vector<Slot> ring_;    ///< slot n is at n modulo the ring's size
    std::uint64_t taken_ = 0;   ///< number of the next slot to take
    std::uint64_t claimed_ = 0; ///< number of the next slot to check for encoding
    std::uint64_t put_ = 0;     ///< number of the next slot to fill
    std::size_t unencoded_ = 0; ///< frames not yet encoded
    bool wasFull_ = false;
    bool closed_ = false;
    bool discarded_ = false;
    std::vector<std::unique_ptr<JpegRows>> spare_;

    std::mutex observerMutex_; ///< held while the observer runs; never locked while mutex_ is held
    std::function<void()> observer_;

    std::vector<std::jthread> workers_; ///< last, so that the threads end before anything they use
};

} // namespace lumavex
