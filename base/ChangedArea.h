// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRect>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace lumavex {

/// Area in which one picture may differ from another: at most `capacity` rectangles, measured downward from the
/// picture's upper-left corner, that cover every pixel that differs. Further rectangles are joined; nothing is ever
/// allocated. Rectangles may overlap; none is empty.
class ChangedArea {
public:
    static constexpr std::size_t capacity = 8;

    ChangedArea() = default; ///< no difference
    explicit ChangedArea(const QRect& rect) { add(rect); }

    void add(const QRect& rect);
    void add(const ChangedArea& other);

    const QRect* begin() const { return rects_.data(); }
    const QRect* end() const { return rects_.data() + count_; }
    bool isEmpty() const { return count_ == 0; }

    /// The touched rows as rectangles of the given columns, from top to bottom, separated by untouched rows.
    ChangedArea asRows(int left, int width) const;

private:
    std::array<QRect, capacity> rects_;
    std::size_t count_ = 0;
};

/// Changes between consecutive pictures of a series, kept for the latest pictures, so that a result made from an
/// earlier picture can be updated. Each picture has a number, never 0 and never reused.
class ChangeHistory {
public:
    /// Adds the next picture, which differs from the previous one within `changed` at most. Ignored for the first
    /// picture.
    void add(std::uint64_t number, const ChangedArea& changed);
    void clear() { count_ = 0; }

    /// The number of the picture added last; 0 when there is none.
    std::uint64_t latest() const { return count_ ? steps_[count_ - 1].number : 0; }
    bool knows(std::uint64_t number) const { return indexOf(number) < count_; }
    /// Area in which the latest picture may differ from picture `number`. std::nullopt when that one is no longer
    /// known: all may differ.
    std::optional<ChangedArea> since(std::uint64_t number) const;

private:
    /// More than the pictures of a series in use at the same time: the encoder queue of a machine with eight
    /// processors.
    static constexpr std::size_t kept = 20;
    struct Step {
        std::uint64_t number = 0;
        ChangedArea changed;
    };
    std::size_t indexOf(std::uint64_t number) const;

    std::array<Step, kept> steps_; ///< oldest first
    std::size_t count_ = 0;
};

} // namespace lumavex
