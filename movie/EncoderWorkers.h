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

/// A bounded queue of frames that several threads encode, and that comes out in the order in which it went in:
///
///     encode, repeat ──► ring of slots ──► take          (one thread puts in, one thread takes out)
///                          ▲ │ pixels
///                     JPEG │ ▼
///                     worker threads
///
/// Of a frame those rows are encoded that are asked for, in strips that the workers share: none waits for another's,
/// nor for another frame's. Who takes the frame joins them, in order. A frame's pixel buffer is released, on a worker's
/// thread, as soon as it is encoded. Buffers of JPEG bytes go round: who has taken one gives it back. In the long run
/// nothing here takes memory anew.
class EncoderWorkers {
public:
    struct Frame {
        std::int64_t start = 0;        ///< as it was handed over
        std::vector<JpegStrip> strips; ///< growing, not overlapping; none for a repetition of the previous frame
        bool failed = false;           ///< it could not be encoded
    };
    enum class Taken { Frame, TimedOut, NoMore };
    enum class Rest { Keep, Discard };

    /// Starts one thread per core, within reason.
    EncoderWorkers();
    /// Discards what is left and ends the threads.
    ~EncoderWorkers();
    EncoderWorkers(const EncoderWorkers&) = delete;
    EncoderWorkers& operator=(const EncoderWorkers&) = delete;

    /// Encodes `runs` (at least one; growing, not overlapping). False, and nothing done, when the queue is full or
    /// closed.
    bool encode(CVPixelBufferRef pixels, std::span<const MacroblockRows> runs, std::int64_t start);
    bool repeat(std::int64_t start);
    /// Lets no more frames in. Those that are in can still be taken, or are discarded.
    void close(Rest rest);

    bool isReady() const;       ///< any thread
    std::size_t queued() const; ///< frames put in and not taken yet; any thread
    /// `becameReady` is called on the taking thread or a worker's, without a lock of the queue held. When this returns,
    /// the previous observer is not running and will not be called again. Not to be called by the observer.
    void observeReadiness(std::function<void()> becameReady);

    /// Waits for the next frame until `deadline`. NoMore once the queue is closed and empty, or its frames are
    /// discarded. What `frame` held is let go of, but for the room it took.
    Taken take(Frame& frame, std::chrono::steady_clock::time_point deadline);
    std::unique_ptr<JpegRows> spare();             ///< never null; what it holds is of no use
    void giveBack(std::unique_ptr<JpegRows> jpeg); ///< null is allowed

private:
    struct Slot {
        Frame frame;
        CVPixelBufferRef pixels;   ///< until the last strip is begun
        std::size_t begun = 0;     ///< strips
        std::size_t unencoded = 0; ///< strips
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
    std::vector<Slot> ring_;    ///< slots by their number modulo the ring's size
    std::uint64_t taken_ = 0;   ///< number of the next slot to take
    std::uint64_t claimed_ = 0; ///< of the next one to look at for encoding
    std::uint64_t put_ = 0;     ///< of the next one to fill
    std::size_t unencoded_ = 0; ///< frames
    bool wasFull_ = false;
    bool closed_ = false;
    bool discarded_ = false;
    std::vector<std::unique_ptr<JpegRows>> spare_;

    std::mutex observerMutex_; ///< held while the observer runs; never locked while mutex_ is held
    std::function<void()> observer_;

    std::vector<std::jthread> workers_; ///< last, so that they end before anything they use
};

} // namespace lumavex
