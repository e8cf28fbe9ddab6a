// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "movie/JpegRows.h"
#include "platform/MovieWriter.h"

#include <memory>

namespace lumavex {

/// Largest width and height of a picture that the JPEG library accepts.
inline constexpr int kLargestJpegSide = 65500;

/// JpegEncoder.h by the JPEG library alone: the reference for everything faster. One thread at a time.
class LibraryJpegEncoder {
public:
    /// Code that converts pixels to planes. The results differ in rounding only, and every encoder of a movie must use
    /// the same.
    enum class Colours {
        Fastest, ///< ColourPlanes when the processor has the instructions
        Library,
    };

    explicit LibraryJpegEncoder(Colours colours = Colours::Fastest);
    ~LibraryJpegEncoder();
    LibraryJpegEncoder(const LibraryJpegEncoder&) = delete;
    LibraryJpegEncoder& operator=(const LibraryJpegEncoder&) = delete;

    /// See JpegEncoder::encode().
    bool encode(const CVPixelBuffer& pixels, MacroblockRows rows, JpegRows& jpeg);

private:
    struct Library;
    const std::unique_ptr<Library> library_;
};

} // namespace lumavex
