// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/CameraModes.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <tuple>

namespace lumavex {
namespace {

/// Webcams deliver their large uncompressed sizes at low rates: a mode slower than this is a last resort.
constexpr double kFluentRate = 24;

enum class Rounding { Nearest, Up };

/// Returns the value of low, low + step, ..., high that is nearest to `wanted`, or the smallest that is not below it.
int fitted(int wanted, int low, int high, int step, Rounding rounding)
{
    if (wanted <= low)
        return low;
    step = std::max(step, 1);
    const int last = low + (high - low) / step * step;
    const int offset = wanted - low;
    const int steps = rounding == Rounding::Up ? (offset + step - 1) / step : (offset + step / 2) / step;
    return int(std::min<std::int64_t>(low + std::int64_t(steps) * step, last));
}

QSize sizeOf(const CameraMode& mode, const QSize& wanted, Rounding rounding)
{
    return {fitted(wanted.width(), mode.smallest.width(), mode.largest.width(), mode.step.width(), rounding),
            fitted(wanted.height(), mode.smallest.height(), mode.largest.height(), mode.step.height(), rounding)};
}

std::int64_t area(const QSize& size)
{
    return std::int64_t(size.width()) * size.height();
}

std::int64_t squaredDistance(const QSize& a, const QSize& b)
{
    const std::int64_t x = a.width() - b.width();
    const std::int64_t y = a.height() - b.height();
    return x * x + y * y;
}

bool isFluent(const CameraMode& mode)
{
    return mode.rate == 0 || mode.rate >= kFluentRate;
}

bool sameShape(const QSize& a, const QSize& b)
{
    return std::int64_t(a.width()) * b.height() == std::int64_t(a.height()) * b.width();
}

std::optional<CameraChoice> nearestMode(const std::vector<CameraMode>& modes, const QSize& wanted)
{
    std::optional<CameraChoice> best;
    std::tuple<std::int64_t, std::int64_t, bool, int> bestRank;
    for (const CameraMode& mode : modes) {
        const QSize size = sizeOf(mode, wanted, Rounding::Nearest);
        if (size.isEmpty())
            continue;
        const std::tuple rank(squaredDistance(size, wanted), -area(size), !isFluent(mode), mode.cost);
        if (!best || rank < bestRank) {
            best = CameraChoice{mode.id, size, size};
            bestRank = rank;
        }
    }
    return best;
}

std::optional<CameraChoice> scalableMode(const std::vector<CameraMode>& modes, const QSize& wanted)
{
    std::optional<CameraChoice> best;
    std::tuple<bool, bool, std::int64_t, int> bestRank;
    for (const CameraMode& mode : modes) {
        const QSize size = sizeOf(mode, wanted, Rounding::Up);
        if (size.width() < wanted.width() || size.height() < wanted.height())
            continue;
        // A slow mode of exactly the wanted size still wins: only among larger modes does the rate rank first.
        const std::tuple rank(!isFluent(mode) && size != wanted, !sameShape(size, wanted), area(size),
                              mode.cost + (isFluent(mode) ? 0 : 1000));
        if (!best || rank < bestRank) {
            best = CameraChoice{mode.id, size, wanted};
            bestRank = rank;
        }
    }
    return best;
}

} // namespace

const CameraPreset* cameraPreset(std::int64_t code)
{
    return code >= 0 && code < std::int64_t(kCameraPresets.size()) ? &kCameraPresets[std::size_t(code)] : nullptr;
}

std::optional<CameraChoice> chooseCameraMode(const std::vector<CameraMode>& modes, std::int64_t preset)
{
    const CameraPreset* wanted = cameraPreset(preset);
    if (!wanted)
        return std::nullopt;
    return wanted->match == CameraPreset::Match::Nearest ? nearestMode(modes, wanted->size)
                                                         : scalableMode(modes, wanted->size);
}

} // namespace lumavex
