// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "movie/BlockTransform.h"

#include <array>
#include <cstdint>
#include <span>

struct jpeg_compress_struct;

namespace lumavex {

/// A Huffman code as ISO/IEC 10918-1, C.2 specifies it.
struct HuffmanCode {
    std::span<const std::uint8_t, 16> counts; ///< number of code words of 1 to 16 bits
    std::span<const std::uint8_t> values;     ///< symbols, by ascending code words
};

/// Huffman codes of one kind of component.
struct ComponentCodes {
    HuffmanCode means;       ///< for the difference between a block's DC coefficient and the previous block's
    HuffmanCode frequencies; ///< for the AC coefficients
};

/// Quantisation steps, row by row, and codes of every movie.
struct JpegTables {
    std::array<unsigned int, kBlockSize> steps;
    ComponentCodes luma;
    ComponentCodes chroma;
};
const JpegTables& jpegTables();

/// Sets the tables of a compressor that has the defaults.
void setJpegTables(jpeg_compress_struct& compress);

} // namespace lumavex
