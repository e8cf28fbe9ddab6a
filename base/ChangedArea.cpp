// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/ChangedArea.h"

#include <algorithm>

namespace lumavex {

namespace {

std::int64_t pixelsOf(const QRect& rect)
{
    return std::int64_t{rect.width()} * rect.height();
}

/// Pixels of the bounding rectangle of both that belong to neither; negative when they overlap much.
std::int64_t waste(const QRect& a, const QRect& b)
{
    return pixelsOf(a | b) - pixelsOf(a) - pixelsOf(b);
}

} // namespace

void ChangedArea::add(const QRect& rect)
{
    if (rect.isEmpty())
        return;
    QRect joined = rect;
    const auto absorb = [&](std::size_t i) {
        joined |= rects_[i];
        rects_[i] = rects_[--count_];
    };
    for (std::size_t i = 0; i < count_;) {
        if (waste(rects_[i], joined) > 0) {
            ++i;
            continue;
        }
        absorb(i);
        i = 0; // the larger rectangle may now absorb rectangles that were too small before
    }
    if (count_ == capacity) {
        std::size_t best = 0;
        for (std::size_t i = 1; i < count_; ++i) {
            if (waste(rects_[i], joined) < waste(rects_[best], joined))
                best = i;
        }
        absorb(best);
    }
    rects_[count_++] = joined;
}

void ChangedArea::add(const ChangedArea& other)
{
    for (const QRect& rect : other)
        add(rect);
}

ChangedArea ChangedArea::asRows(int left, int width) const
{
    ChangedArea sorted;
    QRect* const first = sorted.rects_.data();
    // Insertion sort: std::sort contains a branch for more than sixteen elements, which a compiler reports as an
    // overrun here.
    for (const QRect& rect : *this) {
        QRect* const last = first + sorted.count_++;
        QRect* const place =
            std::upper_bound(first, last, rect, [](const QRect& a, const QRect& b) { return a.top() < b.top(); });
        std::move_backward(place, last, last + 1);
        *place = rect;
    }
    ChangedArea rows;
    for (const QRect& rect : sorted) {
        QRect* const last = rows.count_ ? &rows.rects_[rows.count_ - 1] : nullptr;
        if (last && rect.top() <= last->bottom() + 1)
            last->setBottom(std::max(last->bottom(), rect.bottom()));
        else
            rows.rects_[rows.count_++] = QRect(left, rect.top(), width, rect.height());
    }
    return rows;
}

void ChangeHistory::add(std::uint64_t number, const ChangedArea& changed)
{
    if (count_ == kept) {
        std::move(steps_.begin() + 1, steps_.end(), steps_.begin());
        --count_;
    }
    steps_[count_++] = {number, changed};
}

std::size_t ChangeHistory::indexOf(std::uint64_t number) const
{
    const auto end = steps_.begin() + static_cast<std::ptrdiff_t>(count_);
    const auto found = std::find_if(steps_.begin(), end, [number](const Step& step) { return step.number == number; });
    return static_cast<std::size_t>(found - steps_.begin());
}

std::optional<ChangedArea> ChangeHistory::since(std::uint64_t number) const
{
    std::size_t i = indexOf(number);
    if (i == count_)
        return std::nullopt;
    ChangedArea changed;
    while (++i < count_)
        changed.add(steps_[i].changed);
    return changed;
}

} // namespace lumavex
