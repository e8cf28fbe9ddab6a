// SPDX-License-Identifier: GPL-3.0-or-later
#include "movie/JpegEncoder.h"

#include "movie/JpegMarkers.h"
#include "movie/JpegRowCoder.h"

#include <cstring>

namespace lumavex {

namespace {

bool append(std::span<const std::uint8_t> bytes, JpegBuffer& buffer)
{
    const std::size_t before = buffer.bytes().size();
    if (!buffer.makeRoom(before + bytes.size()))
        return false;
    std::memcpy(buffer.data() + before, bytes.data(), bytes.size());
    buffer.setSize(before + bytes.size());
    return true;
}

} // namespace

JpegEncoder::JpegEncoder(Rounding rounding)
    : coder_(JpegRowCoder::isUsable() ? std::make_unique<JpegRowCoder>(rounding) : nullptr)
{
}

JpegEncoder::~JpegEncoder() = default;

bool JpegEncoder::encode(const CVPixelBuffer& pixels, MacroblockRows rows, JpegRows& jpeg)
{
    if (!coder_)
        return library_.encode(pixels, rows, jpeg);
    if (!prepare(pixels))
        return false;
    jpeg.buffer.setSize(0);
    jpeg.bounds.assign(1, 0);
    if (rows.first == 0 && !append(headers_.bytes(), jpeg.buffer))
        return false;
    const int last = allMacroblockRows(pixels.height).end() - 1;
    for (int row = rows.first; row < rows.end(); ++row) {
        const std::array<std::uint8_t, 2> marker = {0xFF, row == last ? kEndOfImage : restartMarker(row)};
        if (!coder_->append(pixels, row, jpeg.buffer) || !append(marker, jpeg.buffer))
            return false;
        jpeg.bounds.push_back(jpeg.buffer.bytes().size());
    }
    return true;
}

bool JpegEncoder::prepare(const CVPixelBuffer& pixels)
{
    if (pixels.width == width_ && pixels.height == height_)
        return true;
    width_ = 0;
    JpegRows first;
    if (!coder_->prepare(pixels.width) || !library_.encode(pixels, {0, 1}, first))
        return false;
    headers_.setSize(0);
    if (!append(headersOf(first.bytes()), headers_))
        return false;
    width_ = pixels.width;
    height_ = pixels.height;
    return true;
}

} // namespace lumavex
