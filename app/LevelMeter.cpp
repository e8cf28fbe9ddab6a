// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/LevelMeter.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <utility>

namespace lumavex {
namespace {

using namespace std::chrono_literals;

constexpr auto kPollInterval = 100ms;
constexpr double kSinkingDecibel = 20; // per second
constexpr double kFloor = -LevelMeter::kSegments * LevelMeter::kSegmentDecibel;
constexpr int kLoudSegments = 1; // the highest segments, just below clipping
constexpr int kGap = 1;

double decibelOf(float peak)
{
    return peak > 0 ? std::max(20 * std::log10(static_cast<double>(peak)), kFloor) : kFloor;
}

/// A segment is lit when the level reaches into it; silence lights none.
int segmentsOf(double decibel)
{
    const int segments = static_cast<int>(std::ceil((decibel - kFloor) / LevelMeter::kSegmentDecibel));
    return std::clamp(segments, 0, LevelMeter::kSegments);
}

} // namespace

LevelMeter::LevelMeter(QWidget* parent) : QWidget(parent)
{
    decibel_.fill(kFloor);
    setAccessibleName(tr("Sound level"));
    setAccessibleDescription(tr("No sound"));
    setToolTip(tr("How loud the recorded sound is, left and right"));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    timer_.setInterval(kPollInterval);
    connect(&timer_, &QTimer::timeout, this, &LevelMeter::poll);
}

void LevelMeter::setSource(Source source)
{
    source_ = std::move(source);
    if (source_)
        source_(); // discards peaks measured before
    else
        take({}, 3600);
    startWhenSeen();
}

void LevelMeter::startWhenSeen()
{
    sinceLast_.start();
    if (source_ && isVisible())
        timer_.start();
    else
        timer_.stop();
}

void LevelMeter::poll()
{
    const double seconds = static_cast<double>(sinceLast_.restart()) / 1000;
    if (!window()->isMinimized())
        take(source_(), seconds);
}

void LevelMeter::take(const SoundPeaks& peaks, double secondsSinceLast)
{
    std::array<int, 2> lit{};
    const std::array heard{decibelOf(peaks.left), decibelOf(peaks.right)};
    for (std::size_t i = 0; i < heard.size(); ++i) {
        decibel_[i] = std::max({heard[i], decibel_[i] - kSinkingDecibel * secondsSinceLast, kFloor});
        lit[i] = segmentsOf(decibel_[i]);
    }
    const std::array before = std::exchange(lit_, lit);
    if (before == lit)
        return;
    update();
    const auto isSound = [](const std::array<int, 2>& bars) { return bars[0] > 0 || bars[1] > 0; };
    if (isSound(before) != isSound(lit))
        setAccessibleDescription(isSound(lit) ? tr("Sound arrives") : tr("No sound"));
}

QSize LevelMeter::sizeHint() const
{
    const int bar = std::max(4, fontMetrics().height() / 4);
    return {kSegments * (bar + kGap) - kGap, 2 * bar + 2 * kGap};
}

void LevelMeter::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QColor ink = palette().color(QPalette::WindowText);
    const bool dark = palette().color(QPalette::Window).lightness() < 128;
    const QColor quiet(dark ? 0x6fb58a : 0x3f8f5f);
    const QColor loud(dark ? 0xe0a850 : 0xc07810);
    QColor empty = ink;
    empty.setAlphaF(0.15F);

    const QSize size = sizeHint();
    const int bar = (size.height() - 2 * kGap) / 2;
    const int top = (height() - size.height()) / 2;
    for (int channel = 0; channel < 2; ++channel) {
        for (int segment = 0; segment < kSegments; ++segment) {
            const bool isLoud = segment >= kSegments - kLoudSegments;
            const bool isLit = segment < lit_[static_cast<std::size_t>(channel)];
            painter.fillRect(segment * (bar + kGap), top + channel * (bar + 2 * kGap), bar, bar,
                             isLit ? (isLoud ? loud : quiet) : empty);
        }
    }
}

void LevelMeter::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    startWhenSeen();
}

void LevelMeter::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    timer_.stop();
}

} // namespace lumavex
