// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "movie/JpegBuffer.h"
#include "platform/MovieWriter.h"

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

namespace lumavex {

/// Pixel rows in a row of macroblocks, the last of a picture excepted.
inline constexpr int kMacroblockHeight = 16;

/// Rows of macroblocks, counted from the top.
struct MacroblockRows {
    int first = 0;
    int count = 0;
    int end() const { return first + count; }
    friend bool operator==(const MacroblockRows&, const MacroblockRows&) = default;
};

/// All rows of a picture.
MacroblockRows allMacroblockRows(int height);

/// The rows of macroblocks that `changed` touches in a picture of that height, as runs that neither overlap nor touch.
/// All rows when `changed` does not grow, none when it is empty.
void findChangedRuns(const std::vector<RowRange>& changed, int height, std::vector<MacroblockRows>& runs);

/// A picture, or a run of its rows of macroblocks, as it lies in its JPEG file. The picture's headers belong to its
/// first row, and the marker that ends a row belongs to it: RST0 to RST7 in turn, EOI behind the last. So rows of
/// pictures of one size can be put together by concatenation.
struct JpegRows {
    JpegBuffer buffer;
    std::vector<std::size_t> bounds; ///< row k of the run lies in the buffer from bounds[k] to bounds[k + 1]

    std::size_t count() const { return bounds.empty() ? 0 : bounds.size() - 1; }
    std::span<const std::uint8_t> bytes() const { return rows(0, count()); }
    std::span<const std::uint8_t> rows(std::size_t first, std::size_t number) const
    {
        return number == 0 ? std::span<const std::uint8_t>{}
                           : buffer.bytes().subspan(bounds[first], bounds[first + number] - bounds[first]);
    }
};

/// Rows of a picture that have been, or are to be, encoded on their own.
struct JpegStrip {
    MacroblockRows rows;
    std::unique_ptr<JpegRows> jpeg; ///< null until encoded
};

/// Makes a picture of `strips` (growing, not overlapping, encoded) and, between them, the rows of `previous`, which is
/// null only when there is nothing between. False when there is no memory; `picture` holds nothing of use then.
bool joinRows(const JpegRows* previous, std::span<const JpegStrip> strips, JpegRows& picture);

} // namespace lumavex
