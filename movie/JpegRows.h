// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "movie/JpegBuffer.h"
#include "platform/MovieWriter.h"

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

namespace lumavex {

/// Pixel rows per row of macroblocks; the last row of a picture may have fewer.
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

/// Finds the rows of macroblocks that `changed` touches in a picture of this height, as runs that neither overlap nor
/// touch. All rows when `changed` is not ascending, none when it is empty.
void findChangedRuns(const std::vector<RowRange>& changed, int height, std::vector<MacroblockRows>& runs);

/// A picture, or a run of its rows of macroblocks, as stored in a JPEG file. The first row includes the picture's
/// headers, and each row includes the marker that ends it: RST0 to RST7 in turn, EOI after the last. So rows of
/// pictures of one size can be concatenated to a picture.
struct JpegRows {
    JpegBuffer buffer;
    std::vector<std::size_t> bounds; ///< row k of the run is in the buffer from bounds[k] to bounds[k + 1]

    std::size_t count() const { return bounds.empty() ? 0 : bounds.size() - 1; }
    std::span<const std::uint8_t> bytes() const { return rows(0, count()); }
    std::span<const std::uint8_t> rows(std::size_t first, std::size_t number) const
    {
        return number == 0 ? std::span<const std::uint8_t>{}
                           : buffer.bytes().subspan(bounds[first], bounds[first + number] - bounds[first]);
    }
};

/// Rows of a picture that are encoded on their own.
struct JpegStrip {
    MacroblockRows rows;
    std::unique_ptr<JpegRows> jpeg; ///< null until encoded
};

/// Joins `strips` (ascending, not overlapping, encoded) with the rows of `previous` between them. `previous` may be
/// null only when there are no rows between. False when there is no memory; the content of `picture` is undefined then.
bool joinRows(const JpegRows* previous, std::span<const JpegStrip> strips, JpegRows& picture);

} // namespace lumavex
