// SPDX-License-Identifier: GPL-3.0-or-later
#include "movie/BoxWriter.h"

#include <algorithm>

namespace lumavex {

BoxWriter::Box::Box(BoxWriter& writer, std::string_view type) : writer_(writer), start_(writer.size())
{
    writer_.u32(0);
    writer_.text(type);
}

BoxWriter::Box::Box(BoxWriter& writer, std::string_view type, std::uint8_t version, std::uint32_t flags)
    : Box(writer, type)
{
    writer_.u32(std::uint32_t{version} << 24 | flags);
}

BoxWriter::Box::~Box()
{
    writer_.setU32At(start_, static_cast<std::uint32_t>(writer_.size() - start_));
}

void BoxWriter::u16(std::uint32_t value)
{
    u8(static_cast<std::uint8_t>(value >> 8));
    u8(static_cast<std::uint8_t>(value));
}

void BoxWriter::u32(std::uint32_t value)
{
    u16(value >> 16);
    u16(value & 0xFFFFU);
}

void BoxWriter::u64(std::uint64_t value)
{
    u32(static_cast<std::uint32_t>(value >> 32));
    u32(static_cast<std::uint32_t>(value));
}

void BoxWriter::text(std::string_view text)
{
    bytes_.insert(bytes_.end(), text.begin(), text.end());
}

std::uint32_t BoxWriter::u32At(std::size_t offset) const
{
    return std::uint32_t{bytes_[offset]} << 24 | std::uint32_t{bytes_[offset + 1]} << 16
           | std::uint32_t{bytes_[offset + 2]} << 8 | bytes_[offset + 3];
}

void BoxWriter::setU32At(std::size_t offset, std::uint32_t value)
{
    for (std::size_t i = 0; i < 4; ++i)
        bytes_[offset + i] = static_cast<std::uint8_t>(value >> (24 - 8 * i));
}

void BoxWriter::setTextAt(std::size_t offset, std::string_view text)
{
    std::copy(text.begin(), text.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(offset));
}

} // namespace lumavex
