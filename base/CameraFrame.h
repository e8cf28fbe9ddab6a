// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSize>

#include <cstddef>
#include <cstdint>

namespace lumavex {

/// How a camera packs its pictures. Where planes are halved, odd sizes are rounded up.
enum class CameraPixels {
    Mjpeg, ///< one JPEG picture per frame; the Huffman tables may be missing (then those of ISO/IEC 10918-1, annex K)
    Yuy2,  ///< Y0 U Y1 V
    Nv12,  ///< Y, then U and V interleaved, at half the width and height
    I420,  ///< Y, U, V, the latter two at half the width and height
    Bgrx,  ///< B, G, R, undefined
};

/// Which weights the YUV kinds were made with.
enum class CameraMatrix { Bt601, Bt709 };
/// Limited: Y from 16 to 235, U and V from 16 to 240. Full: all from 0 to 255.
enum class CameraRange { Limited, Full };

/// One frame as the camera sent it. The memory is valid during the call that hands it over, no longer.
struct CameraFrame {
    CameraPixels pixels = CameraPixels::Bgrx;
    QSize size;    ///< of the frame; what the JPEG says counts for Mjpeg
    QSize picture; ///< of the picture wanted; the frame is cut to this shape about its centre and scaled down. Empty,
                   ///< or larger than the frame: the picture gets the frame's size
    const std::uint8_t* planes[3] = {};
    int strides[3] = {};   ///< bytes from row to row; not for Mjpeg
    std::size_t bytes = 0; ///< of planes[0], for Mjpeg
    CameraMatrix matrix = CameraMatrix::Bt601;
    CameraRange range = CameraRange::Limited;
    std::uint64_t source = 0; ///< which opening of a camera it belongs to
};

} // namespace lumavex
