// SPDX-License-Identifier: GPL-3.0-or-later
#include "movie/HybridMp4File.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

namespace lumavex {

namespace {

constexpr std::string_view kHidden = "free";
constexpr std::size_t kNameOffset = 4;
constexpr std::size_t kNameSize = 4;
/// Enough for some seconds of frames and the sample tables of hours.
constexpr std::int64_t kReserveBytes = std::int64_t{32} << 20;

} // namespace

std::error_code HybridMp4File::create(const std::string& path, const MovieTrack& track)
{
    // Removes an old file instead of emptying it: the file would keep its mode, and a link would lead elsewhere.
    if (::unlink(path.c_str()) != 0 && errno != ENOENT)
        return lastError();
    file_ = FileDescriptor(::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!file_.isOpen())
        return lastError();

    track_ = track;
    const GrowingHead head = growingHead(track);
    durationOffset_ = static_cast<std::int64_t>(head.durationOffset);
    if (const auto error = file_.writeAll(head.bytes, 0)) {
        ::unlink(path.c_str()); // it contains nothing of use
        return error;
    }
    size_ = static_cast<std::int64_t>(head.bytes.size());
    reserve_.hold(std::filesystem::path(path).parent_path().string(), kReserveBytes);
    return {};
}

std::error_code HybridMp4File::adopt(FileDescriptor file, const MovieTrack& track, SampleTable table,
                                     std::int64_t mediaEnd)
{
    file_ = std::move(file);
    track_ = track;
    table_ = std::move(table);
    size_ = mediaEnd;
    return file_.truncate(mediaEnd);
}

std::error_code HybridMp4File::appendSealed(std::span<const std::span<const std::uint8_t>> rest)
{
    std::array<std::uint8_t, kNameSize> name{};
    std::copy_n(boxes_.bytes().begin() + kNameOffset, kNameSize, name.begin());
    boxes_.setTextAt(kNameOffset, kHidden);
    const std::error_code error = tryAppend(name, rest);
    const bool isFull = error == std::errc::no_space_on_device || error.value() == EDQUOT;
    return isFull && reserve_.giveBack() ? tryAppend(name, rest) : error;
}

std::error_code HybridMp4File::tryAppend(std::span<const std::uint8_t> name,
                                         std::span<const std::span<const std::uint8_t>> rest)
{
    const std::int64_t start = size_;
    std::error_code error = file_.writeAll(boxes_.bytes(), start);
    auto position = start + static_cast<std::int64_t>(boxes_.size());
    for (const std::span<const std::uint8_t> part : rest) {
        if (error)
            break;
        error = file_.writeAll(part, position);
        position += static_cast<std::int64_t>(part.size());
    }
    if (!error)
        error = file_.writeAll(name, start + static_cast<std::int64_t>(kNameOffset));
    if (error) {
        // Frees the space, which the complete moov needs on a full disk. If even this fails, the rest is a free box and
        // harmless.
        static_cast<void>(file_.truncate(start));
        return error;
    }
    size_ = position;
    return {};
}

// Without the duration some players show a file that was never finished as one second long.
std::error_code HybridMp4File::updateDuration()
{
    boxes_.clear();
    boxes_.u64(static_cast<std::uint64_t>(table_.end()));
    return file_.writeAll(boxes_.bytes(), durationOffset_);
}

std::error_code HybridMp4File::appendFragment(std::span<const FragmentSample> samples, std::int64_t end,
                                              std::span<const std::span<const std::uint8_t>> pictures)
{
    pictureSizes_.clear();
    for (const auto& picture : pictures)
        pictureSizes_.push_back(static_cast<std::uint32_t>(picture.size()));
    boxes_.clear();
    writeFragmentHead(boxes_, fragments_ + 1, samples, end, pictureSizes_);

    pictureOffsets_.clear();
    std::int64_t offset = size_ + static_cast<std::int64_t>(boxes_.size());
    for (const std::uint32_t size : pictureSizes_) {
        pictureOffsets_.push_back(offset);
        offset += size;
    }
    if (const auto error = appendSealed(pictures))
        return error;

    ++fragments_;
    for (const FragmentSample& sample : samples)
        table_.append({sample.start, pictureOffsets_[sample.picture], pictureSizes_[sample.picture]});
    table_.setEnd(end);
    return updateDuration();
}

std::error_code HybridMp4File::finish(std::int64_t end)
{
    reserve_.giveBack();
    table_.setEnd(end);
    const std::vector<std::uint8_t> head = finishedHead(size_);
    boxes_.clear();
    writeCompleteMoov(boxes_, track_, table_);
    if (const auto error = appendSealed({}))
        return error;
    // The moov must be on the disk before anything points to it.
    if (const auto error = file_.flushToDisk())
        return error;
    if (const auto error = file_.writeAll(head, 0))
        return error;
    return file_.flushToDisk();
}

} // namespace lumavex
