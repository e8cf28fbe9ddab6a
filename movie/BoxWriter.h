// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace lumavex {

/// Serialises boxes of the ISO base media file format (ISO/IEC 14496-12, big-endian) into memory. A plain value.
class BoxWriter {
public:
    /// Writes a box from its construction to its destruction, which fills in the size.
    class Box {
    public:
        Box(BoxWriter& writer, std::string_view type);
        Box(BoxWriter& writer, std::string_view type, std::uint8_t version, std::uint32_t flags); ///< a "full" box
        ~Box();
        Box(const Box&) = delete;
        Box& operator=(const Box&) = delete;

    private:
        BoxWriter& writer_;
        const std::size_t start_;
    };

    void u8(std::uint8_t value) { bytes_.push_back(value); }
    void u16(std::uint32_t value);
    void u32(std::uint32_t value);
    void u64(std::uint64_t value);
    void text(std::string_view text); ///< only the characters: no length, no terminator
    void zeros(std::size_t count) { bytes_.insert(bytes_.end(), count, 0); }

    /// Empties the writer and keeps its memory.
    void clear() { bytes_.clear(); }

    std::size_t size() const { return bytes_.size(); }
    std::span<const std::uint8_t> bytes() const { return bytes_; }
    std::uint32_t u32At(std::size_t offset) const;
    void setU32At(std::size_t offset, std::uint32_t value);
    void setTextAt(std::size_t offset, std::string_view text);

    std::vector<std::uint8_t> take() { return std::move(bytes_); }

private:
    std::vector<std::uint8_t> bytes_;
};

} // namespace lumavex
