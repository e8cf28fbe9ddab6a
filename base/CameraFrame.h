// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSize>

#include <cstddef>
#include <cstdint>

namespace lumavex {

/// Pixel format of a camera frame. Planes of half size round odd sizes up.
enum class CameraPixels {
    Mjpeg, ///< one JPEG picture per frame; may lack Huffman tables (those of ISO/IEC 10918-1, annex K apply then)
    Yuy2,  ///< Y0 U Y1 V
    Nv12,  ///< Y, then U and V interleaved, at half the width and height
    I420,  ///< Y, U, V, the latter two at half the width and height
    Bgrx,  ///< B, G, R, unused byte
};

/// Matrix with which the YUV formats were made.
enum class CameraMatrix { Bt601, Bt709 };
/// Limited: Y from 16 to 235, U and V from 16 to 240. Full: all from 0 to 255.
enum class CameraRange { Limited, Full };

/// One frame as the camera sent it. The memory is valid only during the call that passes the frame.
struct CameraFrame {
    CameraPixels pixels = CameraPixels::Bgrx;
    QSize size;    ///< size of the frame; for Mjpeg the size in the JPEG data applies
    QSize picture; ///< size of the picture to make: the frame is cropped about its centre to this shape and scaled
                   ///< down. If empty, or larger than the frame, the picture has the frame's size
    const std::uint8_t* planes[3] = {};
    int strides[3] = {};   ///< bytes per row; unused for Mjpeg
    std::size_t bytes = 0; ///< size of planes[0]; Mjpeg only
    CameraMatrix matrix = CameraMatrix::Bt601;
    CameraRange range = CameraRange::Limited;
    std::uint64_t source = 0; ///< number of the opening of the camera that sent the frame
};

} // namespace lumavex
