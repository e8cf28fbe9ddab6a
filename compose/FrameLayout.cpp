// SPDX-License-Identifier: GPL-3.0-or-later
#include "compose/FrameLayout.h"

#include <cmath>

namespace lumavex {

namespace {

float toFloat(double value)
{
    return static_cast<float>(value);
}

CGRect placed(const CGSize& frame, std::int64_t positionCode, float w, float h)
{
    const CGPoint origin =
        Return_Position_Origin(positionCode, frame.width, frame.height, frameMargin(frame.width), w, h);
    return {origin.x, origin.y, w, h};
}

struct FloatSize {
    float w;
    float h;
};

/// Changes the picture's longer side by one step of the fit; the shorter one follows.
FloatSize stepped(const FloatSize& size, float ratio, float step, bool upright)
{
    if (upright) {
        const float h = size.h + step;
        return {h / ratio, h};
    }
    const float w = size.w + step;
    return {w, w / ratio};
}

bool sameSize(const FloatSize& a, const FloatSize& b)
{
    return a.w == b.w && a.h == b.h;
}

FloatSize enlarged(FloatSize size, float TW, float TH)
{
    const bool upright = size.h > size.w;
    const float ratio = upright ? size.h / size.w : size.w / size.h;
    const float step = (upright ? TH : TW) / 10;
    while (TW > size.w && TH > size.h) {
        const FloatSize next = stepped(size, ratio, step, upright);
        if (sameSize(next, size))
            break; // the step is lost in 32 bits
        size = next;
    }
    return size;
}

FloatSize reduced(FloatSize size, float TW, float TH)
{
    const bool upright = size.h > size.w;
    const float ratio = upright ? size.h / size.w : size.w / size.h;
    const float step = (upright ? TH : TW) / 10;
    while (size.w > TW || size.h > TH) {
        const FloatSize next = stepped(size, ratio, -step, upright);
        if (sameSize(next, size))
            break; // the step is lost in 32 bits
        size = next;
    }
    return size;
}

} // namespace

int sizeDivisor(std::int64_t sizeCode)
{
    switch (sizeCode) {
    case 0:
        return 8;
    case 1:
        return 4;
    case 2:
        return 3;
    case 3:
        return 2;
    default:
        return 1;
    }
}

CGPoint Return_Position_Origin(std::int64_t positionCode, double W, double H, double m, float w, float h)
{
    const std::int64_t code = positionCode >= 0 && positionCode <= 8 ? positionCode : 8;
    const double columns[] = {m, (W - w) * 0.5, W - w - m};
    const double rows[] = {H - h - m, (H - h) * 0.5, m};
    return {toFloat(columns[code % 3]), toFloat(rows[code / 3])};
}

CGRect screenSecondaryRect(const CGSize& frame, std::int64_t sizeCode, std::int64_t positionCode,
                           const CGSize& size_Screen)
{
    const float w = toFloat(frame.width / sizeDivisor(sizeCode));
    const float h = w / ratioOf(size_Screen);
    return placed(frame, positionCode, w, h);
}

CGRect cameraSecondaryRect(const CGSize& frame, std::int64_t sizeCode, std::int64_t positionCode,
                           std::int64_t i_Camera_CRP)
{
    const int divisor = sizeDivisor(sizeCode);
    const float w = toFloat(frame.width / divisor);
    float h = toFloat(frame.height / divisor);
    switch (i_Camera_CRP) {
    case 3:
    case 5:
        h = w / 1.3333334F;
        break;
    case 4:
        h = w / 1.2222222F;
        break;
    case 6:
    case 7:
        h = w / 1.7777778F;
        break;
    default:
        break;
    }
    return placed(frame, positionCode, w, h);
}

CGRect overlayRect(const CGSize& frame, std::int64_t width, std::int64_t positionCode, const CGSize& overlay)
{
    const float w = static_cast<float>(width);
    const float h = w / ratioOf(overlay);
    return placed(frame, positionCode, w, h);
}

std::optional<CGRect> Return_Fitted_Rect(const CGSize& picture, const CGSize& target)
{
    const bool finite = std::isfinite(picture.width) && std::isfinite(picture.height);
    if (!finite || picture.width == 0 || !(target.width > 0) || !(target.height > 0))
        return std::nullopt;
    const float TW = toFloat(target.width);
    const float TH = toFloat(target.height);
    FloatSize size{toFloat(picture.width), toFloat(picture.height)};
    if (picture.width < target.width && picture.height < target.height)
        size = enlarged(size, TW, TH);
    else
        size = reduced(size, TW, TH);
    const float x = (TW - size.w) * 0.5F;
    const float y = (TH - size.h) * 0.5F;
    return CGRect{x, y, size.w, size.h};
}

} // namespace lumavex
