// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/x11/GrabSeries.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace lumavex {

namespace {

/// Two pictures of the same width, rows without gaps.
struct Pair {
    const std::uint32_t* before;
    const std::uint32_t* now;
    int width;

    bool sameIn(int y, int left, int right) const
    {
        const auto start =
            static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(left);
        return std::memcmp(before + start, now + start, static_cast<std::size_t>(right - left + 1) * 4) == 0;
    }
    bool sameAt(int x, int y) const { return sameIn(y, x, x); }
};

/// The smallest rectangle around the pixels inside `rect` that differ. Quick where much differs: the inside of what
/// has been found is not looked at again.
QRect differing(const Pair& pair, const QRect& rect)
{
    int top = rect.top();
    int bottom = rect.bottom();
    while (top <= bottom && pair.sameIn(top, rect.left(), rect.right()))
        ++top;
    while (bottom > top && pair.sameIn(bottom, rect.left(), rect.right()))
        --bottom;
    int left = rect.right() + 1;
    int right = rect.left() - 1;
    for (int y = top; y <= bottom; ++y) {
        int x = rect.left();
        while (x < left && pair.sameAt(x, y))
            ++x;
        left = x;
        x = rect.right();
        while (x > right && pair.sameAt(x, y))
            --x;
        right = x;
    }
    return {QPoint(left, top), QPoint(right, bottom)};
}

ChangedArea differing(const Pair& pair, const ChangedArea& area)
{
    ChangedArea result;
    for (const QRect& rect : area)
        result.add(differing(pair, rect));
    return result;
}

const std::uint32_t* words(const uchar* bytes)
{
    return reinterpret_cast<const std::uint32_t*>(bytes);
}

} // namespace

GrabSeries::GrabSeries(SharedImagePool& pool, const PixelLayout& layout) : pool_(pool), layout_(layout) {}

void GrabSeries::forget()
{
    raw_ = {};
    last_ = {};
}

Grab GrabSeries::next(xcb_drawable_t drawable, const QRect& rect, const ChangedArea& changed)
{
    const QRect whole(QPoint(0, 0), rect.size());
    if (rect != std::exchange(rect_, rect))
        forget();
    if (last_.serial != 0 && changed.isEmpty())
        return last_;

    ChangeHistory& changes = last_.changes;
    SharedImagePool::Memory memory = pool_.take(rect.size(), changes);
    ChangedArea stale(whole);
    if (const auto since = memory ? changes.since(memory.number()) : std::nullopt) {
        stale = *since;
        stale.add(changed);
    }
    const ChangedArea rows = stale.asRows(0, rect.width());
    if (!memory || !pool_.read(memory, drawable, rect.topLeft(), rows)) {
        forget(); // what was drawn to is known no more
        return {};
    }
    // Whatever was read may be newer than the knowledge of what changed, so all of it is compared.
    ChangedArea difference(whole);
    if (last_.serial != 0)
        difference = differing({words(raw_.constBits()), words(memory.pixels()), rect.width()}, rows);
    if (difference.isEmpty()) {
        memory.setNumber(last_.serial);
        return last_;
    }
    last_.outcome = GrabOutcome::Success;
    last_.serial = pool_.newNumber();
    memory.setNumber(last_.serial);
    raw_ = std::move(memory).toImage();
    last_.picture = layout_.toRgb32(raw_);
    changes.add(last_.serial, difference);
    return last_;
}

} // namespace lumavex
