// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace lumavex {

// ISO/IEC 10918-1, table B.1: the second bytes of markers.
inline constexpr std::uint8_t kStartOfFrame = 0xC0;
inline constexpr std::uint8_t kEndOfImage = 0xD9;
inline constexpr std::uint8_t kStartOfScan = 0xDA;

/// The one that ends a row of macroblocks, the picture's last excepted.
inline std::uint8_t restartMarker(int macroblockRow)
{
    return static_cast<std::uint8_t>(0xD0 + macroblockRow % 8);
}

/// The bytes of the header that begins there: its marker, and the length that all but the first have.
inline std::size_t sizeOfHeader(std::span<const std::uint8_t> jpeg, std::size_t at)
{
    return 2 + static_cast<std::size_t>(jpeg[at + 2] << 8 | jpeg[at + 3]);
}

/// Where the first header with that marker begins, in a picture that has one.
inline std::size_t findHeader(std::span<const std::uint8_t> jpeg, std::uint8_t marker)
{
    std::size_t at = 2;
    while (jpeg[at + 1] != marker)
        at += sizeOfHeader(jpeg, at);
    return at;
}

/// Everything before a picture's first entropy-coded byte.
inline std::span<const std::uint8_t> headersOf(std::span<const std::uint8_t> jpeg)
{
    const std::size_t scan = findHeader(jpeg, kStartOfScan);
    return jpeg.first(scan + sizeOfHeader(jpeg, scan));
}

} // namespace lumavex
