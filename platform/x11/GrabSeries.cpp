// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/x11/GrabSeries.h"

#include <QRegion>

#include <algorithm>
#include <cstring>
#include <utility>

namespace lumavex {

namespace {

/// Two pictures of the same width, with rows stored contiguously.
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

/// The bounding rectangle of the pixels inside `rect` that differ; empty when none does. Fast when many differ: skips
/// the inside of the rectangle found so far.
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
    memory_ = {};
    changed_ = {};
}

bool GrabSeries::read(xcb_drawable_t drawable, const QRect& rect, const ChangedArea& changed, const ReadToo& too)
{
    const QRect whole(QPoint(0, 0), rect.size());
    if (rect.size() != rect_.size())
        forget();
    changed_.add(rect == std::exchange(rect_, rect) ? changed : ChangedArea(whole));
    difference_ = {};
    if (last_.serial != 0 && changed_.isEmpty())
        return true;

    memory_ = pool_.take(rect.size(), last_.changes);
    ChangedArea stale(whole);
    if (const auto since = memory_ ? last_.changes.since(memory_.number()) : std::nullopt) {
        stale = *since;
        stale.add(changed_);
    }
    rows_ = stale.asRows(0, rect.width());
    const bool complete = memory_ && readRows(drawable, too);
    if (!complete)
        forget(); // the damage is no longer known
    return complete;
}

bool GrabSeries::readRows(xcb_drawable_t drawable, const ReadToo& too)
{
    using Reading = SharedImagePool::Reading;
    const QRect others = too.otherRows ? too.otherRows->rows : QRect();
    // Kept separate: rows above and below must not be joined across the rows between them.
    ChangedArea above;
    ChangedArea between;
    ChangedArea below;
    for (const QRect& rows : rows_) {
        const int top = others.isEmpty() ? rect_.height() : others.top();
        const int end = others.isEmpty() ? rect_.height() : others.bottom() + 1;
        above.add(rows & QRect(0, 0, rect_.width(), top));
        between.add(rows & others);
        below.add(rows & QRect(0, end, rect_.width(), rect_.height() - end));
    }
    std::vector<Reading> readings;
    if (too.beside)
        readings.push_back(*too.beside);
    if (too.otherRows)
        readings.push_back({memory_, too.otherRows->drawable, too.otherRows->corner, between, Reading::Into::Place});
    readings.push_back({memory_, drawable, rect_.topLeft(), above, Reading::Into::Place});
    readings.push_back({memory_, drawable, rect_.topLeft(), below, Reading::Into::Place});
    return pool_.read(readings);
}

void GrabSeries::patch(const ChangedArea& places, const uchar* pixels)
{
    if (!memory_)
        return;
    const auto width = static_cast<std::size_t>(rect_.width());
    const std::uint32_t* from = words(pixels);
    auto* const picture = reinterpret_cast<std::uint32_t*>(memory_.pixels());
    for (const QRect& place : places) {
        const auto length = static_cast<std::size_t>(place.width());
        for (const QRect& rows : rows_) {
            const QRect part = place & rows;
            for (int y = part.top(); y <= part.bottom(); ++y)
                std::memcpy(picture + static_cast<std::size_t>(y) * width + static_cast<std::size_t>(place.left()),
                            from + static_cast<std::size_t>(y - place.top()) * length, length * sizeof *from);
        }
        from += length * static_cast<std::size_t>(place.height());
    }
}

const ChangedArea& GrabSeries::compare()
{
    // All pixels read may be newer than the reported damage, so all of them are compared.
    if (memory_ && last_.serial != 0)
        difference_ = differing({words(raw_.constBits()), words(memory_.pixels()), rect_.width()}, rows_);
    else if (memory_)
        difference_ = ChangedArea(QRect(QPoint(0, 0), rect_.size()));
    return difference_;
}

bool GrabSeries::differsOutside(const ChangedArea& area) const
{
    if (!memory_ || last_.serial == 0)
        return false;
    QRegion outside;
    for (const QRect& rect : difference_)
        outside += rect;
    for (const QRect& rect : area)
        outside -= rect;
    const Pair pair{words(raw_.constBits()), words(memory_.pixels()), rect_.width()};
    return std::any_of(outside.begin(), outside.end(),
                       [&](const QRect& rect) { return !differing(pair, rect).isEmpty(); });
}

Grab GrabSeries::finish()
{
    changed_ = {};
    if (!memory_)
        return last_;
    SharedImagePool::Memory memory = std::exchange(memory_, {});
    if (difference_.isEmpty()) {
        memory.setNumber(last_.serial);
        return last_;
    }
    last_.outcome = GrabOutcome::Success;
    last_.serial = pool_.newNumber();
    memory.setNumber(last_.serial);
    raw_ = std::move(memory).toImage();
    last_.picture = layout_.toRgb32(raw_);
    last_.changes.add(last_.serial, difference_);
    return last_;
}

void GrabSeries::abandon()
{
    if (memory_)
        memory_.setNumber(0); // the age of its content is unknown
    memory_ = {};
}

} // namespace lumavex
