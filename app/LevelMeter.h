// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/SoundRecorder.h"

#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>

#include <array>
#include <functional>

namespace lumavex {

/// Shows the level of the sound being recorded: one bar per channel, 5 dB per segment up to full scale.
///
/// Every redraw on the screen is captured and encoded too, so the meter redraws only when a segment changes.
class LevelMeter final : public QWidget {
    Q_OBJECT
public:
    using Source = std::function<SoundPeaks()>;

    static constexpr int kSegments = 12;
    static constexpr double kSegmentDecibel = 5;

    explicit LevelMeter(QWidget* parent = nullptr);

    /// Polls the source ten times a second while the meter is visible. Null: shows silence.
    void setSource(Source source);
    /// Applies a reading; bars rise at once and fall by 20 dB a second.
    void take(const SoundPeaks& peaks, double secondsSinceLast);
    /// Number of lit segments, left and right.
    std::array<int, 2> lit() const { return lit_; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void poll();
    void startWhenSeen();

    Source source_;
    QTimer timer_;
    QElapsedTimer sinceLast_;
    std::array<double, 2> decibel_;
    std::array<int, 2> lit_{};
};

} // namespace lumavex
