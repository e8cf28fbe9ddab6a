// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "movie/BlockTransform.h"
#include "movie/JpegBuffer.h"
#include "movie/JpegRows.h"
#include "movie/LibraryJpegEncoder.h"
#include "platform/MovieWriter.h"

#include <memory>

namespace lumavex {

class JpegRowCoder;

/// Encodes pictures as JFIF: full range, 4:2:0, one restart marker per row of macroblocks. All pictures of one size use
/// the same tables (JpegTables.h) and no smoothing, so that rows of macroblocks can be exchanged between pictures.
/// After the first picture of a size it allocates no more memory. One thread at a time.
///
/// When the processor has the instructions, JpegRowCoder codes the rows and the library writes only the headers, once
/// for each size; otherwise the library does everything.
class JpegEncoder {
public:
    /// `rounding` applies to JpegRowCoder only; the library always rounds to nearest.
    explicit JpegEncoder(Rounding rounding = Rounding::Sparing);
    ~JpegEncoder();
    JpegEncoder(const JpegEncoder&) = delete;
    JpegEncoder& operator=(const JpegEncoder&) = delete;

    /// Encodes some rows of the picture, byte-identical to the same rows of the whole picture. Ignores alpha. False
    /// when there is no memory; the content of `jpeg` is undefined then.
    bool encode(const CVPixelBuffer& pixels, MacroblockRows rows, JpegRows& jpeg);

private:
    bool prepare(const CVPixelBuffer& pixels);

    LibraryJpegEncoder library_;
    std::unique_ptr<JpegRowCoder> coder_; ///< null when the processor lacks the instructions
    JpegBuffer headers_;
    int width_ = 0; ///< size of the pictures that the headers and the coder are prepared for
    int height_ = 0;
};

} // namespace lumavex
