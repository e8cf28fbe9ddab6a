// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MovieWriter.h"
#include "platform/movie/JpegRows.h"

#include <memory>

namespace lumavex {

/// The largest width and height of a picture that the JPEG library takes.
inline constexpr int kLargestJpegSide = 65500;

/// Encodes pictures as JFIF: full range, 4:2:0, one restart marker per row of macroblocks. Every picture of one size
/// uses the same tables (JpegTables.h) and no smoothing, so that rows of macroblocks can be exchanged between pictures.
/// Once it has encoded a picture it takes no more memory for others of that size. One thread at a time.
class JpegEncoder {
public:
    /// Who makes planes of the pixels: both are exact to the rounding, and every encoder of a movie must use the same.
    enum class Colours { Fastest, Library };

    explicit JpegEncoder(Colours colours = Colours::Fastest);
    ~JpegEncoder();
    JpegEncoder(const JpegEncoder&) = delete;
    JpegEncoder& operator=(const JpegEncoder&) = delete;

    /// Encodes some rows of the picture, to the byte as they are in the whole picture. Alpha is ignored. False when
    /// there is no memory; `jpeg` holds nothing of use then.
    bool encode(const CVPixelBuffer& pixels, MacroblockRows rows, JpegRows& jpeg);

private:
    struct Library;
    const std::unique_ptr<Library> library_;
};

} // namespace lumavex
