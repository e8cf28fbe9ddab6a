// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSize>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace lumavex {

/// Decodes JPEG pictures one after another. One thread at a time.
class JpegFrame {
public:
    JpegFrame();

    /// Reads a picture's header. Returns its size; empty when it is no JPEG picture. The memory must last until
    /// `decode`.
    QSize open(const std::uint8_t* data, std::size_t bytes);
    /// Decodes the picture opened last to opaque B, G, R, A at its size or one of `smallestNotBelow`. False when
    /// nothing could be decoded; a truncated picture is decoded as far as possible.
    bool decode(std::uint8_t* to, int stride, const QSize& size);

    /// The smallest of the picture's size, its half, quarter and eighth that is below `wanted` in neither direction.
    static QSize smallestNotBelow(const QSize& size, const QSize& wanted);

private:
    struct Destroy {
        void operator()(void* handle) const;
    };
    std::unique_ptr<void, Destroy> handle_;
    const std::uint8_t* data_ = nullptr;
    std::size_t bytes_ = 0;
};

} // namespace lumavex
