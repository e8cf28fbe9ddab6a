// SPDX-License-Identifier: GPL-3.0-or-later
#include "compose/PixelRows.h"

#include <QtEndian>

#include <cstring>

namespace lumavex {

namespace {

static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN, "pixels are processed as little-endian words");

// A pixel, blue first, reads as the word 0xAARRGGBB.
std::uint32_t stored(std::uint32_t pixel, PixelStore store)
{
    if (store.alpha == AlphaUse::Opaque)
        pixel |= 0xFF000000U;
    return store.order == PixelOrder::AlphaFirst ? qbswap(pixel) : pixel;
}

/// The weighted sum of two pixels, two bytes at a time; the weights add up to 2 to the power `shift`.
std::uint32_t weighted(std::uint32_t a, std::uint32_t b, std::uint32_t weightA, std::uint32_t weightB, int shift)
{
    constexpr std::uint64_t lanes = 0x00FF00FF00FF00FFULL;
    const auto spread = [](std::uint32_t p) { return (p | (std::uint64_t(p) << 24)) & lanes; };
    const std::uint64_t half = 0x0001000100010001ULL << (shift - 1);
    const std::uint64_t sum = spread(a) * weightA + spread(b) * weightB + half;
    const std::uint64_t result = (sum >> shift) & lanes;
    return std::uint32_t(result | (result >> 24));
}

void copy(std::uint32_t* to, const std::uint32_t* from, std::size_t pixels, PixelStore store)
{
    if (store.order == PixelOrder::BlueFirst && store.alpha == AlphaUse::Kept) {
        std::memcpy(to, from, pixels * 4);
        return;
    }
    for (std::size_t i = 0; i < pixels; ++i)
        to[i] = stored(from[i], store);
}

void mix(std::uint32_t* to, const std::uint32_t* upper, const std::uint32_t* lower, std::size_t pixels, int lowerWeight)
{
    const auto weight = std::uint32_t(lowerWeight);
    for (std::size_t i = 0; i < pixels; ++i)
        to[i] = weighted(upper[i], lower[i], 256 - weight, weight, 8);
}

void scaleColumns(std::uint32_t* to, const std::uint32_t* row, const ColumnTaps& taps, std::size_t pixels,
                  PixelStore store)
{
    for (std::size_t i = 0; i < pixels; ++i) {
        const std::uint32_t* pair = row + taps.first[i];
        to[i] = stored(weighted(pair[0], pair[1], taps.weights[i] & 0xFFU, taps.weights[i] >> 8U, 7), store);
    }
}

/// Extends the four bytes of a pixel to four 16-bit values.
std::uint64_t widened(std::uint32_t pixel)
{
    const std::uint64_t p = pixel;
    return (p & 0xFF) | (p & 0xFF00) << 8 | (p & 0xFF0000) << 16 | (p & 0xFF000000) << 24;
}

std::uint32_t narrowed(std::uint64_t words)
{
    return std::uint32_t((words & 0xFF) | (words >> 8 & 0xFF00) | (words >> 16 & 0xFF0000)
                         | (words >> 24 & 0xFF000000));
}

void addToSums(std::uint64_t* sums, const std::uint32_t* row, std::size_t pixels)
{
    for (std::size_t i = 0; i < pixels; ++i)
        sums[i] += widened(row[i]);
}

void addPairsToSums(std::uint64_t* sums, const std::uint32_t* row, std::size_t sumCount)
{
    for (std::size_t i = 0; i < sumCount; ++i)
        sums[i] += widened(row[2 * i]) + widened(row[2 * i + 1]);
}

void addPairs(std::uint64_t* sums, std::size_t pixels)
{
    for (std::size_t i = 0; i < pixels; ++i)
        sums[i] = sums[2 * i] + sums[2 * i + 1];
}

void addTriples(std::uint64_t* sums, std::size_t pixels)
{
    for (std::size_t i = 0; i < pixels; ++i)
        sums[i] = sums[3 * i] + sums[3 * i + 1] + sums[3 * i + 2];
}

void divideSums(std::uint32_t* to, const std::uint64_t* sums, std::size_t pixels, int divisor)
{
    const auto by = std::uint32_t(divisor);
    for (std::size_t i = 0; i < pixels; ++i) {
        std::uint32_t pixel = 0;
        for (int byte = 0; byte < 4; ++byte)
            pixel |= ((std::uint32_t(sums[i] >> (16 * byte)) & 0xFFFFU) + by / 2) / by << (8 * byte);
        to[i] = pixel;
    }
}

void blend(std::uint32_t* to, const std::uint32_t* over, std::size_t pixels, PixelOrder order)
{
    const int alphaShift = order == PixelOrder::BlueFirst ? 24 : 0;
    for (std::size_t i = 0; i < pixels; ++i) {
        const std::uint32_t rest = 255 - (over[i] >> alphaShift & 0xFF);
        if (rest == 255)
            continue; // fully transparent
        // x / 255 rounded, as (x + 128 + (x + 128) / 256) / 256, which holds for all products of two bytes
        const std::uint64_t product = widened(to[i]) * rest + 0x0080008000800080ULL;
        const std::uint64_t quotient = (product + (product >> 8 & 0x00FF00FF00FF00FFULL)) >> 8;
        to[i] = over[i] + narrowed(quotient & 0x00FF00FF00FF00FFULL);
    }
}

constexpr RowFunctions plain{copy,     mix,        scaleColumns, addToSums, addPairsToSums,
                             addPairs, addTriples, divideSums,   blend};

} // namespace

const RowFunctions& plainRowFunctions()
{
    return plain;
}

const RowFunctions& rowFunctions()
{
    static const RowFunctions& chosen = avx2RowFunctions() ? *avx2RowFunctions() : plain;
    return chosen;
}

} // namespace lumavex
