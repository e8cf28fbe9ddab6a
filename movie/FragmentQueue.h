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

/// Gathers encoded frames and hands them to the file as fragments: as soon as they are about a second of media, and at
/// the latest a second after they came, should no further frame come. Only in the second case is the length of the
/// fragment's last frame a guess; the finished file knows better. A repeated frame costs no bytes within a fragment.
/// One thread.
class FragmentQueue {
public:
    using GiveBack = std::function<void(std::unique_ptr<JpegRows>)>;
    using TimePoint = std::chrono::steady_clock::time_point;

    /// Buffers that are written and done with go to `giveBack`. `timescale` is the file's; a frame lasts
    /// `usualDuration` (ticks) as long as no other has followed.
    FragmentQueue(HybridMp4File& file, GiveBack giveBack, std::int32_t timescale, std::int64_t usualDuration)
        : file_(file), giveBack_(std::move(giveBack)), timescale_(timescale), lastDuration_(usualDuration)
    {
    }

    /// Starts must grow. A null `jpeg` repeats the previous frame, of which there must be one.
    std::error_code add(std::int64_t start, std::unique_ptr<JpegRows> jpeg, TimePoint now);
    /// The newest picture, which a null `jpeg` would repeat; null before the first. Until the next call of another
    /// member.
    const JpegRows* newest() const { return pictures_.empty() ? nullptr : pictures_.back().get(); }
    /// When writeAll is due; TimePoint::max() when nothing waits.
    TimePoint deadline() const;
    std::error_code writeAll();
    /// The same, when it is known that the last frame ends at `end`.
    std::error_code writeAll(std::int64_t end);

private:
    std::error_code write(std::size_t count, std::int64_t end);
    void forgetWritten(std::size_t count);

    HybridMp4File& file_;
    const GiveBack giveBack_;
    const std::int64_t timescale_;
    std::vector<FragmentSample> samples_;
    std::vector<std::unique_ptr<JpegRows>> pictures_; ///< of samples_; also the last written one, for a repetition
    std::vector<std::span<const std::uint8_t>> parts_;
    std::size_t pictureBytes_ = 0;
    std::int64_t lastDuration_;
    TimePoint oldest_;
};

} // namespace lumavex
