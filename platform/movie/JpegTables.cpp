// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/movie/JpegTables.h"

#include <array>

namespace lumavex {

namespace {

// ISO/IEC 11172-2, the default matrix of intra pictures, row by row. At 3/8 it is a sixth smaller than the common JPEG
// matrix at equal likeness on screen contents.
constexpr std::array<unsigned int, DCTSIZE2> kIntraMatrix = {
    8,  16, 19, 22, 26, 27, 29, 34, //
    16, 16, 22, 24, 27, 29, 34, 37, //
    19, 22, 26, 27, 29, 34, 34, 38, //
    22, 22, 26, 27, 29, 34, 37, 40, //
    22, 26, 27, 29, 32, 35, 40, 48, //
    26, 27, 29, 32, 35, 40, 48, 58, //
    26, 27, 29, 34, 38, 46, 56, 69, //
    27, 29, 35, 38, 46, 56, 69, 83,
};
constexpr unsigned int kQuantiserScale = 3; // in eighths
// The mean of a block is kept to one grey level, scale or not: coarser steps show as bands in even areas.
constexpr unsigned int kMeanStep = 8;

} // namespace

void setJpegTables(jpeg_compress_struct& compress)
{
    std::array<unsigned int, DCTSIZE2> steps = kIntraMatrix;
    for (unsigned int& step : steps)
        step = step * kQuantiserScale / 8;
    steps[0] = kMeanStep;
    jpeg_add_quant_table(&compress, 0, steps.data(), 100, TRUE);
    jpeg_add_quant_table(&compress, 1, steps.data(), 100, TRUE);
}

} // namespace lumavex
