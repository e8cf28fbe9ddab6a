// SPDX-License-Identifier: GPL-3.0-or-later
#include "camera/JpegFrame.h"

#include <turbojpeg.h>

namespace lumavex {

void JpegFrame::Destroy::operator()(void* handle) const
{
    tjDestroy(handle);
}

JpegFrame::JpegFrame() : handle_(tjInitDecompress()) {}

QSize JpegFrame::open(const std::uint8_t* data, std::size_t bytes)
{
    int width = 0;
    int height = 0;
    int subsampling = 0;
    int colorspace = 0;
    data_ = nullptr;
    if (!handle_ || !data || bytes == 0
        || tjDecompressHeader3(handle_.get(), data, bytes, &width, &height, &subsampling, &colorspace) != 0)
        return {};
    data_ = data;
    bytes_ = bytes;
    return {width, height};
}

bool JpegFrame::decode(std::uint8_t* to, int stride, const QSize& size)
{
    if (!data_)
        return false;
    // BGRA rather than BGRX: only BGRA guarantees 255 in the fourth byte. The limit of scans: a small picture of very
    // many scans could keep the thread busy for minutes.
    const int result = tjDecompress2(handle_.get(), data_, bytes_, to, size.width(), stride, size.height(), TJPF_BGRA,
                                     TJFLAG_LIMITSCANS);
    return result == 0 || tjGetErrorCode(handle_.get()) == TJERR_WARNING;
}

QSize JpegFrame::smallestNotBelow(const QSize& size, const QSize& wanted)
{
    for (const int denominator : {8, 4, 2}) {
        const tjscalingfactor factor{1, denominator};
        const QSize reduced(TJSCALED(size.width(), factor), TJSCALED(size.height(), factor));
        if (reduced.width() >= wanted.width() && reduced.height() >= wanted.height())
            return reduced;
    }
    return size;
}

} // namespace lumavex
