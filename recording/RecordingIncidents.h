// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <array>
#include <vector>

namespace lumavex {

/// The gaps in what a recording shows and sounds, and the text that sums them up when it has ended. Times are seconds
/// of the movie, in which pauses take no time.
class RecordingIncidents {
public:
    enum class Kind { SoundLost, Silence, CameraGone, RegionOutside };

    void clear();
    /// A gap that is open already goes on.
    void begin(Kind kind, double at);
    /// Nothing happens when there is no gap.
    void end(Kind kind, double at);
    bool isOpen(Kind kind) const;

    /// One kind's part of the summary.
    QString summaryOf(Kind kind, double length) const;
    /// Of a movie of this length, at whose end every gap ends. A gap that is no part of it, as one within a pause, is
    /// left out. Empty when there is none.
    QString summary(double length) const;

private:
    struct Gap {
        double begin = 0;
        double end = -1; ///< before its begin: open
    };
    static constexpr std::size_t kinds = 4;

    std::vector<Gap>& gapsOf(Kind kind) { return gaps_[static_cast<std::size_t>(kind)]; }
    const std::vector<Gap>& gapsOf(Kind kind) const { return gaps_[static_cast<std::size_t>(kind)]; }

    std::array<std::vector<Gap>, kinds> gaps_;
};

} // namespace lumavex
