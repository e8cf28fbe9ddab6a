// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MovieWriter.h"
#include "platform/movie/JpegBuffer.h"

#include <memory>

namespace lumavex {

/// The largest width and height of a picture that the JPEG library takes.
inline constexpr int kLargestJpegSide = 65500;

/// Encodes pictures as JFIF: full range, 4:2:0, one restart marker per row of macroblocks. The quantisation is that of
/// MPEG-1 intra pictures at a scale of 3 in 8. Every picture of one size uses the same tables (no optimised Huffman
/// codes, no smoothing), so that rows of macroblocks can be exchanged between pictures. One thread at a time.
class JpegEncoder {
public:
    JpegEncoder();
    ~JpegEncoder();
    JpegEncoder(const JpegEncoder&) = delete;
    JpegEncoder& operator=(const JpegEncoder&) = delete;

    /// Alpha is ignored. False when there is no memory; `jpeg` holds nothing of use then.
    bool encode(const CVPixelBuffer& pixels, JpegBuffer& jpeg);

private:
    struct Library;
    const std::unique_ptr<Library> library_;
};

} // namespace lumavex
