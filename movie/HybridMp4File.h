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

/// A movie file that is playable at every moment of its life (ISO/IEC 14496-12).
///
/// While it grows it is a fragmented file, so that written data is never lost:
///
///     ftyp  free(16)  moov+mvex   moof mdat   moof mdat   moof mdat …
///
/// Finishing appends a complete moov. One write at offset 0 then turns the free box into the header of an mdat that
/// contains all fragments, which makes it an ordinary file:
///
///     ftyp  mdat [ moov+mvex moof mdat moof mdat moof mdat ]   moov
///
/// A kill can tear any write, and a torn moof would make players refuse the whole file. Therefore a moof (and the
/// complete moov) is appended under the name free, which players skip, and gets its own name by a write of four bytes
/// when everything is in the file. All bytes of the head that are overwritten in place lie in the first 4096 of the
/// file, which the kernel copies in one step.
///
/// Disk space is reserved from the beginning, so that nothing is lost when another program fills the disk: the fragment
/// that finds it full, those until the recording ends, and the sample tables use that space.
///
/// One thread at a time; bytesWritten() from any thread.
class HybridMp4File {
public:
    /// Creates the file with mode 0600 and replaces a file of the same name.
    std::error_code create(const std::string& path, const MovieTrack& track);
    /// Continues a growing file that is open for reading and writing. `table` holds the samples of its complete
    /// fragments, which end at `mediaEnd`; anything after that is cut off.
    std::error_code adopt(FileDescriptor file, const MovieTrack& track, SampleTable table, std::int64_t mediaEnd);

    /// Appends frames that end at `end` (ticks). On an error the file contains all of them or none.
    std::error_code appendFragment(std::span<const FragmentSample> samples, std::int64_t end,
                                   std::span<const std::span<const std::uint8_t>> pictures);

    /// Makes the file an ordinary one that ends at `end` and flushes it to the disk. On an error it stays playable.
    std::error_code finish(std::int64_t end);

    std::size_t sampleCount() const { return table_.count(); }
    std::int64_t end() const { return table_.end(); } ///< end of the last sample, ticks
    std::int64_t bytesWritten() const { return size_.load(std::memory_order_relaxed); }

private:
    /// Appends the content of boxes_, whose first box becomes visible only when everything is in the file, and then
    /// `rest`. On a full disk it frees the reserve and tries again.
    std::error_code appendSealed(std::span<const std::span<const std::uint8_t>> rest);
    std::error_code tryAppend(std::span<const std::uint8_t> name, std::span<const std::span<const std::uint8_t>> rest);
    std::error_code updateDuration();

    FileDescriptor file_;
    DiskReserve reserve_; ///< held from create() to finish()
    MovieTrack track_;
    SampleTable table_;
    std::int64_t durationOffset_ = 0;
    std::atomic<std::int64_t> size_ = 0; ///< offset of the next box
    std::uint32_t fragments_ = 0;

    // Kept between fragments only for their memory.
    BoxWriter boxes_;
    std::vector<std::uint32_t> pictureSizes_;
    std::vector<std::int64_t> pictureOffsets_;
};

} // namespace lumavex
