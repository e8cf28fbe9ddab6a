// SPDX-License-Identifier: GPL-3.0-or-later
#include "compose/Resampler.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace lumavex {

namespace {

/// Sides of the blocks that are averaged; 16 x 16 x 255 is the largest sum that fits in 16 bits.
constexpr int blockSizes[] = {16, 12, 8, 6, 4, 3, 2, 1};

const std::uint32_t* rowOf(const QImage& picture, int x, int y)
{
    return reinterpret_cast<const std::uint32_t*>(picture.constScanLine(y)) + x;
}

/// Division of a length of source pixels among target pixels.
struct Division {
    double step;        ///< source pixels per target pixel
    int block;          ///< source pixels averaged to one
    int blocksInSource; ///< the last one may be incomplete

    Division(int sourceLength, int targetLength)
        : step(double(sourceLength) / targetLength),
          block(*std::ranges::find_if(blockSizes, [this](int size) { return size <= std::max(step, 1.0); })),
          blocksInSource((sourceLength + block - 1) / block)
    {
    }
    /// Position of a target pixel's centre, in blocks; 0 is the centre of the source's first block.
    double centre(int pixel) const { return std::clamp((pixel + 0.5) * step / block - 0.5, 0.0, blocksInSource - 1.0); }
};

struct Span {
    int first;
    int count;
};

/// reached() for one axis. A pixel mixes the block before its centre and the one after it.
Span reachedAlong(Span source, Span target, Span part)
{
    const int first = std::max(part.first - source.first, 0);
    const int last = std::min(part.first + part.count, source.first + source.count) - source.first - 1;
    if (first > last)
        return {target.first, 0};
    if (source.count == target.count)
        return {target.first + first, last - first + 1};
    const Division division(source.count, target.count);
    const int firstBlock = first / division.block;
    const int lastBlock = last / division.block;
    // One more on either side for rounding.
    const double perBlock = division.block / division.step;
    const int begin = firstBlock <= 1 ? 0 : int(std::floor((firstBlock - 0.5) * perBlock - 0.5)) - 1;
    const int end = lastBlock >= division.blocksInSource - 2 ? target.count
                                                             : int(std::ceil((lastBlock + 1.5) * perBlock - 0.5)) + 2;
    const int from = std::clamp(begin, 0, target.count);
    return {target.first + from, std::clamp(end, from, target.count) - from};
}

} // namespace

void Resampler::Axis::prepare(int sourceStart, int sourceLength, int targetStart, int targetLength, int clipStart,
                              int clipLength)
{
    // Blocks begin at the source's edge, so that the result does not depend on the clip.
    const Division division(sourceLength, targetLength);
    const auto centre = [&](int pixel) { return division.centre(pixel - targetStart); };
    const int blocksInSource = division.blocksInSource;
    block = division.block;
    const int firstBlock = int(centre(clipStart));
    const int lastBlock = std::min(int(centre(clipStart + clipLength - 1)) + 1, blocksInSource - 1);
    count = lastBlock - firstBlock + 1;
    start = sourceStart + firstBlock * block;
    length = std::min(count * block, sourceLength - firstBlock * block);

    first.resize(std::size_t(clipLength));
    weight.resize(std::size_t(clipLength));
    for (int i = 0; i < clipLength; ++i) {
        const double position = centre(clipStart + i) - firstBlock;
        const int left = std::clamp(int(position), 0, std::max(count - 2, 0));
        first[std::size_t(i)] = left;
        weight[std::size_t(i)] = std::uint16_t(count > 1 ? std::lround((position - left) * 256) : 0);
    }
}

void Resampler::prepareTaps()
{
    taps_.resize(columns_.weight.size());
    for (std::size_t i = 0; i < taps_.size(); ++i) {
        const unsigned right = (columns_.weight[i] + 1U) / 2;
        taps_[i] = std::uint16_t(right << 8U | (128 - right));
    }
}

/// A row of blocks, from the first column needed.
const std::uint32_t* Resampler::sourceRow(const QImage& picture, int block)
{
    if (rows_.block == 1 && columns_.block == 1)
        return rowOf(picture, columns_.start, rows_.start + block);
    const int slot = block % 2;
    std::vector<std::uint32_t>& result = blocks_[slot];
    if (blockRow_[slot] == block)
        return result.data();
    blockRow_[slot] = block;

    const RowFunctions& rows = rowFunctions();
    const bool inPairs = columns_.block % 2 == 0;
    const int perSum = inPairs ? 2 : 1;
    const auto needed = std::size_t(columns_.length / perSum);
    const bool single = columns_.length % perSum != 0; // the last pixel has no neighbour and counts twice
    sums_.assign(std::size_t(columns_.count) * std::size_t(columns_.block / perSum), 0);
    for (int i = 0; i < rows_.block; ++i) {
        const int y = std::min(block * rows_.block + i, rows_.length - 1);
        const std::uint32_t* row = rowOf(picture, columns_.start, rows_.start + y);
        (inPairs ? rows.addPairsToSums : rows.addToSums)(sums_.data(), row, needed);
        if (single) {
            const std::uint32_t twice[] = {row[2 * needed], row[2 * needed]};
            rows.addPairsToSums(sums_.data() + needed, twice, 1);
        }
    }
    const std::size_t summed = needed + (single ? 1 : 0);
    std::fill(sums_.begin() + std::ptrdiff_t(summed), sums_.end(), sums_[summed - 1]);
    const auto count = std::size_t(columns_.count);
    int width = columns_.block / perSum;
    for (; width % 2 == 0; width /= 2)
        rows.addPairs(sums_.data(), count * std::size_t(width / 2));
    if (width == 3)
        rows.addTriples(sums_.data(), count);
    result.resize(count);
    rows.divideSums(result.data(), sums_.data(), count, rows_.block * columns_.block);
    return result.data();
}

QRect Resampler::reached(const QRect& source, const QRect& target, const QRect& part)
{
    // Pixels are copied only when both sides are equal.
    const Span columns =
        reachedAlong({source.x(), source.width()}, {target.x(), target.width()}, {part.x(), part.width()});
    const Span rows =
        reachedAlong({source.y(), source.height()}, {target.y(), target.height()}, {part.y(), part.height()});
    return {columns.first, rows.first, columns.count, rows.count};
}

void Resampler::draw(const QImage& picture, const QRect& source, const QRect& target, const QRect& clip,
                     const Canvas& canvas, AlphaUse alpha)
{
    const RowFunctions& rows = rowFunctions();
    const PixelStore store{canvas.order, alpha};
    const auto width = std::size_t(clip.width());
    if (source.size() == target.size()) {
        const QPoint shift = source.topLeft() - target.topLeft();
        for (int y = clip.top(); y <= clip.bottom(); ++y)
            rows.copy(canvas.at(clip.x(), y), rowOf(picture, clip.x() + shift.x(), y + shift.y()), width, store);
        return;
    }
    columns_.prepare(source.x(), source.width(), target.x(), target.width(), clip.x(), clip.width());
    rows_.prepare(source.y(), source.height(), target.y(), target.height(), clip.y(), clip.height());
    prepareTaps();
    blockRow_[0] = blockRow_[1] = -1;
    const auto count = std::size_t(columns_.count);
    mixed_.resize(count + 1);

    for (int i = 0; i < clip.height(); ++i) {
        const int upper = rows_.first[std::size_t(i)];
        const int lowerWeight = rows_.weight[std::size_t(i)];
        const std::uint32_t* row = nullptr;
        if (lowerWeight == 0 || lowerWeight == 256) {
            row = sourceRow(picture, upper + lowerWeight / 256);
        } else {
            const std::uint32_t* upperRow = sourceRow(picture, upper);
            rows.mix(mixed_.data(), upperRow, sourceRow(picture, upper + 1), count, lowerWeight);
            row = mixed_.data();
        }
        if (count == 1) { // the taps always read two pixels
            mixed_[0] = mixed_[1] = row[0];
            row = mixed_.data();
        }
        rows.scaleColumns(canvas.at(clip.x(), clip.y() + i), row, {columns_.first.data(), taps_.data()}, width, store);
    }
}

} // namespace lumavex
