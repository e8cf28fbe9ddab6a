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

/// Encodes pictures as JFIF: full range, 4:2:0, one restart marker per row of macroblocks. Every picture of one size
/// uses the same tables (JpegTables.h) and no smoothing, so that rows of macroblocks can be exchanged between pictures.
/// Once it has encoded a picture it takes no more memory for others of that size. One thread at a time.
///
/// Where the processor allows it the rows are ours (JpegRowCoder.h) and the library writes the headers alone, once for
/// each size; elsewhere everything is the library's.
class JpegEncoder {
public:
    /// The library knows but one way of rounding.
    explicit JpegEncoder(Rounding rounding = Rounding::Sparing);
    ~JpegEncoder();
    JpegEncoder(const JpegEncoder&) = delete;
    JpegEncoder& operator=(const JpegEncoder&) = delete;

    /// Encodes some rows of the picture, to the byte as they are in the whole picture. Alpha is ignored. False when
    /// there is no memory; `jpeg` holds nothing of use then.
    bool encode(const CVPixelBuffer& pixels, MacroblockRows rows, JpegRows& jpeg);

private:
    bool prepare(const CVPixelBuffer& pixels);

    LibraryJpegEncoder library_;
    std::unique_ptr<JpegRowCoder> coder_; ///< null where the processor lacks the instructions
    JpegBuffer headers_;
    int width_ = 0; ///< of the pictures that the headers and the coder are for
    int height_ = 0;
};

} // namespace lumavex
