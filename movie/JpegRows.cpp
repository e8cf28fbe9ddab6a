// SPDX-License-Identifier: GPL-3.0-or-later
#include "movie/JpegRows.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

namespace lumavex {

namespace {

// `to` must have the capacity.
void appendRows(const JpegRows& from, int first, int count, JpegRows& to)
{
    if (count <= 0)
        return;
    const auto begin = static_cast<std::size_t>(first);
    const auto number = static_cast<std::size_t>(count);
    const auto bytes = from.rows(begin, number);
    const std::size_t at = to.bounds.back();
    std::memcpy(to.buffer.data() + at, bytes.data(), bytes.size());
    for (std::size_t row = begin + 1; row <= begin + number; ++row)
        to.bounds.push_back(at + from.bounds[row] - from.bounds[begin]);
}

} // namespace

MacroblockRows allMacroblockRows(int height)
{
    return {0, (height - 1) / kMacroblockHeight + 1};
}

void findChangedRuns(const std::vector<RowRange>& changed, int height, std::vector<MacroblockRows>& runs)
{
    runs.clear();
    std::int64_t lowest = 0;
    for (const RowRange& range : changed) {
        if (range.first < lowest) {
            runs.assign(1, allMacroblockRows(height));
            return;
        }
        lowest = std::int64_t{range.first} + std::max(range.count, 0);
        const int end = static_cast<int>(std::min<std::int64_t>(lowest, height));
        if (range.first >= end)
            continue;
        const int first = range.first / kMacroblockHeight;
        const int last = (end - 1) / kMacroblockHeight;
        if (!runs.empty() && first <= runs.back().end())
            runs.back().count = last + 1 - runs.back().first;
        else
            runs.push_back({first, last + 1 - first});
    }
}

bool joinRows(const JpegRows* previous, std::span<const JpegStrip> strips, JpegRows& picture)
{
    std::size_t capacity = previous ? previous->bytes().size() : 0;
    for (const JpegStrip& strip : strips)
        capacity += strip.jpeg->bytes().size();
    // Pictures grow by little; the rounded capacity avoids moving their buffers each time.
    if (!picture.buffer.grow(std::bit_ceil(capacity)))
        return false;

    picture.bounds.assign(1, 0);
    int row = 0;
    for (const JpegStrip& strip : strips) {
        if (previous)
            appendRows(*previous, row, strip.rows.first - row, picture);
        appendRows(*strip.jpeg, 0, strip.rows.count, picture);
        row = strip.rows.end();
    }
    if (previous)
        appendRows(*previous, row, static_cast<int>(previous->count()) - row, picture);
    picture.buffer.setSize(picture.bounds.back());
    return true;
}

} // namespace lumavex
