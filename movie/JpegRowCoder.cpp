// SPDX-License-Identifier: GPL-3.0-or-later
#include "movie/JpegRowCoder.h"

#include <algorithm>

namespace lumavex {

namespace {

constexpr int kBlockSide = 8;
constexpr std::size_t kBlocksInMacroblock = 6;

std::size_t macroblocksIn(int width)
{
    return (static_cast<std::size_t>(width) + 15) / 16;
}

} // namespace

bool JpegRowCoder::isUsable()
{
    return ColourPlanes::isFast() && avx2TransformBlockPair() && EntropyCoder::isUsable();
}

JpegRowCoder::JpegRowCoder(Rounding rounding)
    : quantiser_(jpegTables().steps, rounding), luma_(jpegTables().luma), chroma_(jpegTables().chroma)
{
}

bool JpegRowCoder::prepare(int width)
{
    const std::size_t blocks = macroblocksIn(width) * kBlocksInMacroblock;
    return planes_.prepare(width) && segment_.grow(blocks * EntropyCoder::kMostBlockBytes + EntropyCoder::kSlack);
}

bool JpegRowCoder::append(const CVPixelBuffer& pixels, int macroblockRow, JpegBuffer& to)
{
    planes_.convert(pixels, macroblockRow);
    const std::size_t count = macroblocksIn(pixels.width);
    const bool lastIsHalf = (pixels.width + kBlockSide - 1) / kBlockSide % 2 != 0;
    const bool upperOnly = pixels.height - macroblockRow * kMacroblockHeight <= kBlockSide;
    coder_.begin(segment_.data());
    Means means;
    for (std::size_t macroblock = 0; macroblock < count; ++macroblock) {
        const bool secondIsFiller = lastIsHalf && macroblock + 1 == count;
        writeLuma(macroblock, 0, secondIsFiller, means.luma);
        if (upperOnly) {
            coder_.writeFiller(luma_);
            coder_.writeFiller(luma_);
        } else {
            writeLuma(macroblock, 1, secondIsFiller, means.luma);
        }
        writeChroma(macroblock, means);
    }
    const auto segment = coder_.end();
    const std::size_t before = to.bytes().size();
    if (!to.makeRoom(before + 2 * segment.size()))
        return false;
    to.setSize(static_cast<std::size_t>(copyWithZeros(segment, to.data() + before) - to.data()));
    return true;
}

void JpegRowCoder::writeLuma(std::size_t macroblock, std::size_t half, bool secondIsFiller, int& mean)
{
    const PlaneView luma = planes_.luma();
    const std::uint8_t* const first = luma.row(kBlockSide * half) + std::size_t{2} * kBlockSide * macroblock;
    transform_(first, first + kBlockSide, luma.stride, quantiser_, blocks_);
    coder_.write(blocks_[0], luma_, mean);
    if (secondIsFiller)
        coder_.writeFiller(luma_);
    else
        coder_.write(blocks_[1], luma_, mean);
}

void JpegRowCoder::writeChroma(std::size_t macroblock, Means& means)
{
    const std::size_t at = kBlockSide * macroblock;
    transform_(planes_.blue().row(0) + at, planes_.red().row(0) + at, planes_.blue().stride, quantiser_, blocks_);
    coder_.write(blocks_[0], chroma_, means.blue);
    coder_.write(blocks_[1], chroma_, means.red);
}

} // namespace lumavex
