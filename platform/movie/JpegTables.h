// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdio>

#include <jpeglib.h>

namespace lumavex {

/// Gives a compressor that has the defaults the quantisation and the Huffman codes of every movie.
void setJpegTables(jpeg_compress_struct& compress);

} // namespace lumavex
