// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "movie/HybridMp4File.h"
#include "movie/JpegRows.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <system_error>
#include <vector>

namespace lumavex {

/// Collects encoded frames and writes them to the file in fragments of about one second of media. If no further frame
/// comes, it writes a fragment after one second at the latest. Only then is the duration of the fragment's last frame a
/// guess, which the finished file corrects. A repeated frame costs no bytes within a fragment. One thread.
class FragmentQueue {
public:
    using GiveBack = std::function<void(std::unique_ptr<JpegRows>)>;
    using TimePoint = std::chrono::steady_clock::time_point;

    /// `giveBack` receives buffers that are no longer needed. `timescale` is the file's. A frame lasts `usualDuration`
    /// (ticks) until another one follows.
    FragmentQueue(HybridMp4File& file, GiveBack giveBack, std::int32_t timescale, std::int64_t usualDuration)
        : file_(file), giveBack_(std::move(giveBack)), timescale_(timescale), lastDuration_(usualDuration)
    {
    }

    /// Starts must increase. A null `jpeg` repeats the previous frame, which must exist.
    std::error_code add(std::int64_t start, std::unique_ptr<JpegRows> jpeg, TimePoint now);
    /// The newest picture, which a null `jpeg` would repeat; null before the first. Valid until the next call of
    /// another member.
    const JpegRows* newest() const { return pictures_.empty() ? nullptr : pictures_.back().get(); }
    /// Time at which writeAll() is due; TimePoint::max() when nothing waits.
    TimePoint deadline() const;
    std::error_code writeAll();
    /// The same when the end of the last frame is known.
    std::error_code writeAll(std::int64_t end);

private:
    std::error_code write(std::size_t count, std::int64_t end);
    void forgetWritten(std::size_t count);

    HybridMp4File& file_;
    const GiveBack giveBack_;
    const std::int64_t timescale_;
    std::vector<FragmentSample> samples_;
    std::vector<std::unique_ptr<JpegRows>>
        pictures_; ///< pictures of samples_, and the last written one for a repetition
    std::vector<std::span<const std::uint8_t>> parts_;
    std::size_t pictureBytes_ = 0;
    std::int64_t lastDuration_;
    TimePoint oldest_;
};

} // namespace lumavex
