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
    std::span<const std::uint8_t, 16> counts; ///< of code words of 1 to 16 bits
    std::span<const std::uint8_t> values;     ///< the symbols, by growing code words
};

/// The codes of a kind of components.
struct ComponentCodes {
    HuffmanCode means;       ///< for how far a block's mean is from the block's before it
    HuffmanCode frequencies; ///< for everything else
};

/// The quantisation, row by row, and the codes of every movie.
struct JpegTables {
    std::array<unsigned int, kBlockSize> steps;
    ComponentCodes luma;
    ComponentCodes chroma;
};
const JpegTables& jpegTables();

/// Gives them to a compressor that has the defaults.
void setJpegTables(jpeg_compress_struct& compress);

} // namespace lumavex
