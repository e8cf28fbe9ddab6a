// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRect>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace lumavex {

/// Where one picture may differ from another: rectangles, downward from the picture's upper-left corner, that cover
/// every pixel that differs. There are few of them, so more than that are joined, and nothing is ever allocated. They
/// may overlap; none is empty.
class ChangedArea {
public:
    static constexpr std::size_t capacity = 8;

    ChangedArea() = default; ///< nothing differs
    explicit ChangedArea(const QRect& rect) { add(rect); }

    void add(const QRect& rect);
    void add(const ChangedArea& other);

    const QRect* begin() const { return rects_.data(); }
    const QRect* end() const { return rects_.data() + count_; }
    bool isEmpty() const { return count_ == 0; }

    /// The rows that are touched, as rectangles of the given columns, from top to bottom, with rows between them.
    ChangedArea asRows(int left, int width) const;

private:
    std::array<QRect, capacity> rects_;
    std::size_t count_ = 0;
};

/// What changed from each to the next of the latest pictures of a series, so that something made of an earlier one can
/// be brought up to date. Pictures are known by numbers, never 0 and each used once.
class ChangeHistory {
public:
    /// The next picture differs from the one added before within `changed` at most. For the first one that says
    /// nothing.
    void add(std::uint64_t number, const ChangedArea& changed);
    void clear() { count_ = 0; }

    /// The number of the picture added last; 0 when there is none.
    std::uint64_t latest() const { return count_ ? steps_[count_ - 1].number : 0; }
    bool knows(std::uint64_t number) const { return indexOf(number) < count_; }
    /// Where the latest picture may differ from an earlier one. Nothing when that one is not known any more:
    /// everywhere.
    std::optional<ChangedArea> since(std::uint64_t number) const;

private:
    /// More than a series has pictures in use at the same time: the encoders' queue of a machine with eight processors.
    static constexpr std::size_t kept = 20;
    struct Step {
        std::uint64_t number = 0;
        ChangedArea changed;
    };
    std::size_t indexOf(std::uint64_t number) const;

    std::array<Step, kept> steps_; ///< the oldest first
    std::size_t count_ = 0;
};

} // namespace lumavex
