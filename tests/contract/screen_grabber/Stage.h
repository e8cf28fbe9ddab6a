// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/ScreenGrabber.h"

#include <QRect>
#include <QRgb>

#include <memory>

namespace lumavex::test {

/// A screen of 640 x 480, its desktop of one colour, on which windows can be put: a real one or the fake's.
class Stage {
public:
    static constexpr QRgb kDesktop = 0xff204060;

    virtual ~Stage() = default;
    virtual ScreenGrabber& grabber() = 0;
    /// A window on top of all others; its number. y downward.
    virtual std::uint32_t show(const QRect& bounds, QRgb color) = 0;
    void recolor(std::uint32_t window, QRgb color) { draw(window, {0, 0, 640, 480}, color); }
    /// `part` in the window, cut at its edges.
    virtual void draw(std::uint32_t window, const QRect& part, QRgb color) = 0;
    virtual void movePointer(int x, int y) = 0;
};

enum class StageKind { Fake, Server, ManagedServer, CompositedServer, ServerWithoutSharedMemory };
std::unique_ptr<Stage> createStage(StageKind kind);

} // namespace lumavex::test
