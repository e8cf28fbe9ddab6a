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

/// Marker that ends a row of macroblocks, except the last row of a picture.
inline std::uint8_t restartMarker(int macroblockRow)
{
    return static_cast<std::uint8_t>(0xD0 + macroblockRow % 8);
}

/// Size of the header at `at`: its marker and the length that follows (only the first header has none).
inline std::size_t sizeOfHeader(std::span<const std::uint8_t> jpeg, std::size_t at)
{
    return 2 + static_cast<std::size_t>(jpeg[at + 2] << 8 | jpeg[at + 3]);
}

/// Offset of the first header with this marker. The picture must contain one.
inline std::size_t findHeader(std::span<const std::uint8_t> jpeg, std::uint8_t marker)
{
    std::size_t at = 2;
    while (jpeg[at + 1] != marker)
        at += sizeOfHeader(jpeg, at);
    return at;
}

/// All bytes before a picture's first entropy-coded byte.
inline std::span<const std::uint8_t> headersOf(std::span<const std::uint8_t> jpeg)
{
    const std::size_t scan = findHeader(jpeg, kStartOfScan);
    return jpeg.first(scan + sizeOfHeader(jpeg, scan));
}

} // namespace lumavex
