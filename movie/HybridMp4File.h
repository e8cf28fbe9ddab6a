// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/FileDescriptor.h"
#include "movie/DiskReserve.h"
#include "movie/Mp4Boxes.h"

#include <atomic>
#include <cstdint>
#include <span>
#include <string>
#include <system_error>
#include <vector>

namespace lumavex {

/// A movie file that can be played at every moment of its life (ISO/IEC 14496-12).
///
/// While it grows it is a fragmented file, so that what has been written is never lost:
///
///     ftyp  free(16)  moov+mvex   moof mdat   moof mdat   moof mdat …
///
/// Finishing appends a complete moov and then, by one write at offset 0, turns the free box into the header of an mdat
/// that swallows all the fragments, which makes it an ordinary file:
///
///     ftyp  mdat [ moov+mvex moof mdat moof mdat moof mdat ]   moov
///
/// A kill can tear any write. A torn moof would make players refuse the whole file, so a moof (and the complete moov)
/// is appended under the name free, which players pass over, and gets its own name by a write of four bytes when
/// everything is in the file. The bytes of a file that is overwritten in place all lie in its first 4096, which the
/// kernel copies at a stroke.
///
/// Some space is held on the disk from the beginning, so that one that another program fills costs nothing: the
/// fragment that finds it full, those until the recording is ended, and the tables go into that space.
///
/// One thread at a time; bytesWritten from any thread.
class HybridMp4File {
public:
    /// Creates the file with mode 0600, in place of one of the same name.
    std::error_code create(const std::string& path, const MovieTrack& track);
    /// Goes on with a growing file that was opened for reading and writing. `table` holds the samples of its complete
    /// fragments, which end at `mediaEnd`; what stands behind them is cut off.
    std::error_code adopt(FileDescriptor file, const MovieTrack& track, SampleTable table, std::int64_t mediaEnd);

    /// Appends frames that end at `end` (ticks). On an error all of them are in the file or none.
    std::error_code appendFragment(std::span<const FragmentSample> samples, std::int64_t end,
                                   std::span<const std::span<const std::uint8_t>> pictures);

    /// Makes the file an ordinary one that ends at `end` and flushes it to the disk. On an error it is still playable.
    std::error_code finish(std::int64_t end);

    std::size_t sampleCount() const { return table_.count(); }
    std::int64_t end() const { return table_.end(); } ///< of the last sample, ticks
    std::int64_t bytesWritten() const { return size_.load(std::memory_order_relaxed); }

private:
    /// Appends what is in boxes_, the first box of which is to be seen only when everything is in the file, and the
    /// rest. On a disk that has become full it tries again with the space that was held for this.
    std::error_code appendSealed(std::span<const std::span<const std::uint8_t>> rest);
    std::error_code tryAppend(std::span<const std::uint8_t> name, std::span<const std::span<const std::uint8_t>> rest);
    std::error_code updateDuration();

    FileDescriptor file_;
    DiskReserve reserve_; ///< from create to finish
    MovieTrack track_;
    SampleTable table_;
    std::int64_t durationOffset_ = 0;
    std::atomic<std::int64_t> size_ = 0; ///< where the next box goes
    std::uint32_t fragments_ = 0;

    // Kept between fragments for their memory alone.
    BoxWriter boxes_;
    std::vector<std::uint32_t> pictureSizes_;
    std::vector<std::int64_t> pictureOffsets_;
};

} // namespace lumavex
