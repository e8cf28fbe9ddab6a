// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/x11/XcbConnection.h"

#include <QImage>
#include <QString>

#include <cstdint>
#include <optional>

namespace lumavex {

/// Memory layout of the root window's pixels: 32 bits each, three fields of 8 or more bits.
struct PixelLayout {
    int redShift = 16; ///< shift of the colour's upper 8 bits
    int greenShift = 8;
    int blueShift = 0;

    /// True when the pixels already have Format_RGB32.
    bool isRgb32() const { return redShift == 16 && greenShift == 8 && blueShift == 0; }
    /// The picture as Format_RGB32; the picture itself when it already has that format.
    QImage toRgb32(const QImage& raw) const;
};

/// The layout of the connection's screen; std::nullopt, with the reason in `trouble` as text for the user, when it
/// cannot be recorded.
std::optional<PixelLayout> pixelLayoutOf(const XcbConnection& connection, QString& trouble);

} // namespace lumavex
