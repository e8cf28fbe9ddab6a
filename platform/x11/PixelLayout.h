// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/x11/XcbConnection.h"

#include <QImage>
#include <QString>

#include <cstdint>
#include <optional>

namespace lumavex {

/// How the root window's pixels lie in memory: 32 bits each, three fields of 8 or more bits.
struct PixelLayout {
    int redShift = 16; ///< of each colour's upper 8 bits
    int greenShift = 8;
    int blueShift = 0;

    /// True when the pixels are those of Format_RGB32 already.
    bool isRgb32() const { return redShift == 16 && greenShift == 8 && blueShift == 0; }
    /// The picture as Format_RGB32; the picture itself when it is that already.
    QImage toRgb32(const QImage& raw) const;
};

/// The layout of the connection's screen; nothing, with the reason in the user's words, when it cannot be recorded.
std::optional<PixelLayout> pixelLayoutOf(const XcbConnection& connection, QString& trouble);

} // namespace lumavex
