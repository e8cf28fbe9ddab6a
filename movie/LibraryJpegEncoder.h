// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "movie/JpegRows.h"
#include "platform/MovieWriter.h"

#include <memory>

namespace lumavex {

/// The largest width and height of a picture that the JPEG library takes.
inline constexpr int kLargestJpegSide = 65500;

/// What JpegEncoder.h does, by the JPEG library: the plain way, that everything faster is held against. One thread at a
/// time.
class LibraryJpegEncoder {
public:
    /// Who makes planes of the pixels: both are exact to the rounding, and every encoder of a movie must use the same.
    enum class Colours {
        Fastest, ///< ours where the processor allows it
        Library,
    };

    explicit LibraryJpegEncoder(Colours colours = Colours::Fastest);
    ~LibraryJpegEncoder();
    LibraryJpegEncoder(const LibraryJpegEncoder&) = delete;
    LibraryJpegEncoder& operator=(const LibraryJpegEncoder&) = delete;

    /// As JpegEncoder::encode().
    bool encode(const CVPixelBuffer& pixels, MacroblockRows rows, JpegRows& jpeg);

private:
    struct Library;
    const std::unique_ptr<Library> library_;
};

} // namespace lumavex
