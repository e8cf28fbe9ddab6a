// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <array>
#include <vector>

namespace lumavex {

/// The gaps in the picture and sound of a recording, and the text that summarises them at its end. Times are seconds of
/// the movie, which excludes pauses.
class RecordingIncidents {
public:
    enum class Kind { SoundLost, Silence, CameraGone, RegionOutside };

    void clear();
    /// An open gap of this kind continues.
    void begin(Kind kind, double at);
    /// Does nothing when no gap is open.
    void end(Kind kind, double at);
    bool isOpen(Kind kind) const;

    /// Part of the summary for one kind.
    QString summaryOf(Kind kind, double length) const;
    /// Summary for a movie of this length; its end closes every gap. Gaps outside the movie, such as one within a
    /// pause, are left out. Empty when there is none.
    QString summary(double length) const;

private:
    struct Gap {
        double begin = 0;
        double end = -1; ///< less than the beginning: open
    };
    static constexpr std::size_t kinds = 4;

    std::vector<Gap>& gapsOf(Kind kind) { return gaps_[static_cast<std::size_t>(kind)]; }
    const std::vector<Gap>& gapsOf(Kind kind) const { return gaps_[static_cast<std::size_t>(kind)]; }

    std::array<std::vector<Gap>, kinds> gaps_;
};

} // namespace lumavex
