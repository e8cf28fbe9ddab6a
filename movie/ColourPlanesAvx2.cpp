// SPDX-License-Identifier: GPL-3.0-or-later
#include "movie/ColourPlanes.h"

// Only functions marked LUMAVEX_AVX2 may use AVX2, so that the program also starts on processors without it.
#if defined(__x86_64__)

#include <immintrin.h>

#define LUMAVEX_AVX2 __attribute__((target("avx2")))

namespace lumavex {

namespace {

// In 32768ths. The luma weights add up to one and those of each chroma to zero, so that grey stays grey.
struct Weights {
    int red;
    int green;
    int blue;
};
constexpr Weights kLuma = {9798, 19235, 3735};
constexpr Weights kBlue = {-5529, -10855, 16384};
constexpr Weights kRed = {16384, -13720, -2664};
constexpr int kShift = 15;

/// Eight pixels, or the sums of eight pairs: alpha and green, red and blue, as interleaved 16-bit values.
struct Eight {
    __m256i alphaGreen;
    __m256i redBlue;
};

LUMAVEX_AVX2 Eight load(const std::uint8_t* from)
{
    const __m256i pixels = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
    const __m256i mask = _mm256_set1_epi32(0x00FF00FF);
    return {_mm256_and_si256(pixels, mask), _mm256_and_si256(_mm256_srli_epi32(pixels, 8), mask)};
}

LUMAVEX_AVX2 Eight sum(const Eight& a, const Eight& b)
{
    return {_mm256_add_epi16(a.alphaGreen, b.alphaGreen), _mm256_add_epi16(a.redBlue, b.redBlue)};
}

LUMAVEX_AVX2 __m256i weighted(const Eight& pixels, const Weights& weights)
{
    const __m256i green = _mm256_set1_epi32(weights.green * 0x10000);
    const __m256i redBlue = _mm256_set1_epi32(weights.blue * 0x10000 + (weights.red & 0xFFFF));
    return _mm256_add_epi32(_mm256_madd_epi16(pixels.alphaGreen, green), _mm256_madd_epi16(pixels.redBlue, redBlue));
}

LUMAVEX_AVX2 __m256i luma(const Eight& pixels)
{
    const __m256i half = _mm256_set1_epi32(1 << (kShift - 1));
    return _mm256_srai_epi32(_mm256_add_epi32(weighted(pixels, kLuma), half), kShift);
}

/// Computes eight means of four pixels from the sums of two rows, in the order 0, 1, 4, 5, 2, 3, 6, 7.
LUMAVEX_AVX2 __m256i chroma(const Eight& left, const Eight& right, const Weights& weights)
{
    const __m256i sums = _mm256_hadd_epi32(weighted(left, weights), weighted(right, weights));
    // Half a step less the smallest unit, since the purest colour would otherwise round up to 256.
    const __m256i middle = _mm256_set1_epi32((128 << (kShift + 2)) + (1 << (kShift + 1)) - 1);
    return _mm256_srai_epi32(_mm256_add_epi32(sums, middle), kShift + 2);
}

LUMAVEX_AVX2 void convert(const PixelRowPair& rows, std::size_t sixteens)
{
    for (std::size_t i = 0; i < sixteens; ++i) {
        const Eight upperLeft = load(rows.upper + 64 * i);
        const Eight upperRight = load(rows.upper + 64 * i + 32);
        const Eight lowerLeft = load(rows.lower + 64 * i);
        const Eight lowerRight = load(rows.lower + 64 * i + 32);

        // Packing works on halves of the registers and leaves groups of four values out of order.
        const __m256i upper = _mm256_packs_epi32(luma(upperLeft), luma(upperRight));
        const __m256i lower = _mm256_packs_epi32(luma(lowerLeft), luma(lowerRight));
        const __m256i both =
            _mm256_permutevar8x32_epi32(_mm256_packus_epi16(upper, lower), _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(rows.upperLuma + 16 * i), _mm256_castsi256_si128(both));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(rows.lowerLuma + 16 * i), _mm256_extracti128_si256(both, 1));

        const Eight left = sum(upperLeft, lowerLeft);
        const Eight right = sum(upperRight, lowerRight);
        const __m256i words = _mm256_packs_epi32(chroma(left, right, kBlue), chroma(left, right, kRed));
        const __m256i bytes = _mm256_packus_epi16(words, words);
        const __m128i ordered = _mm_unpacklo_epi16(_mm256_castsi256_si128(bytes), _mm256_extracti128_si256(bytes, 1));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(rows.blue + 8 * i), ordered);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(rows.red + 8 * i), _mm_unpackhi_epi64(ordered, ordered));
    }
}

} // namespace

ConvertPixelRowPair avx2ConvertPixelRowPair()
{
    return __builtin_cpu_supports("avx2") ? convert : nullptr;
}

} // namespace lumavex

#else

lumavex::ConvertPixelRowPair lumavex::avx2ConvertPixelRowPair()
{
    return nullptr;
}

#endif
