// SPDX-License-Identifier: GPL-3.0-or-later
#include "compose/PixelRows.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <random>
#include <vector>

namespace {

using namespace lumavex;
using testing::ElementsAre;

std::vector<std::uint32_t> noise(std::size_t pixels, unsigned seed)
{
    std::mt19937 random(seed);
    std::vector<std::uint32_t> result(pixels);
    std::generate(result.begin(), result.end(), [&random] { return std::uint32_t(random()); });
    return result;
}

/// Random, but no colour above its alpha.
std::vector<std::uint32_t> premultipliedNoise(std::size_t pixels, PixelOrder order, unsigned seed)
{
    std::vector<std::uint32_t> result = noise(pixels, seed);
    for (std::uint32_t& pixel : result) {
        auto* bytes = reinterpret_cast<std::uint8_t*>(&pixel);
        const int alpha = order == PixelOrder::BlueFirst ? 3 : 0;
        for (int i = 0; i < 4; ++i)
            bytes[i] = std::min(bytes[i], bytes[alpha]);
    }
    return result;
}

constexpr PixelStore stores[] = {{PixelOrder::BlueFirst, AlphaUse::Opaque},
                                 {PixelOrder::BlueFirst, AlphaUse::Kept},
                                 {PixelOrder::AlphaFirst, AlphaUse::Opaque},
                                 {PixelOrder::AlphaFirst, AlphaUse::Kept}};

TEST(PixelRows, VariantsGiveTheSameBytes)
{
    const RowFunctions* fast = avx2RowFunctions();
    if (!fast)
        GTEST_SKIP() << "no AVX2 on this machine";
    const RowFunctions& plain = plainRowFunctions();
    for (const std::size_t pixels : {1U, 7U, 8U, 9U, 16U, 61U, 200U}) {
        const auto a = noise(2 * pixels + 1, 1);
        const auto b = noise(2 * pixels + 1, 2);
        std::vector<std::uint32_t> one(pixels);
        std::vector<std::uint32_t> two(pixels);
        for (const PixelStore store : stores) {
            plain.copy(one.data(), a.data(), pixels, store);
            fast->copy(two.data(), a.data(), pixels, store);
            EXPECT_EQ(one, two);

            std::vector<std::int32_t> first(pixels);
            std::vector<std::uint16_t> weights(pixels);
            for (std::size_t i = 0; i < pixels; ++i) {
                first[i] = std::int32_t(b[i] % (2 * pixels));
                const unsigned right = (b[i] >> 8U) % 129;
                weights[i] = std::uint16_t(right << 8U | (128 - right));
            }
            plain.scaleColumns(one.data(), a.data(), {first.data(), weights.data()}, pixels, store);
            fast->scaleColumns(two.data(), a.data(), {first.data(), weights.data()}, pixels, store);
            EXPECT_EQ(one, two);
        }
        for (int weight = 1; weight < 256; ++weight) {
            plain.mix(one.data(), a.data(), b.data(), pixels, weight);
            fast->mix(two.data(), a.data(), b.data(), pixels, weight);
            EXPECT_EQ(one, two) << weight;
        }
        std::vector<std::uint64_t> sumsOne(2 * pixels);
        std::vector<std::uint64_t> sumsTwo(2 * pixels);
        for (int i = 0; i < 5; ++i) {
            plain.addToSums(sumsOne.data(), a.data(), 2 * pixels);
            fast->addToSums(sumsTwo.data(), a.data(), 2 * pixels);
            plain.addPairsToSums(sumsOne.data(), b.data(), pixels);
            fast->addPairsToSums(sumsTwo.data(), b.data(), pixels);
        }
        plain.addPairs(sumsOne.data(), pixels);
        fast->addPairs(sumsTwo.data(), pixels);
        EXPECT_EQ(sumsOne, sumsTwo);
        for (const int divisor : {1, 3, 4, 9, 36, 96, 144, 256}) {
            std::vector<std::uint64_t> sums(pixels, 0);
            const auto words = noise(4 * pixels, 7);
            for (std::size_t i = 0; i < 4 * pixels; ++i) // each word up to what so many bytes can add up to
                sums[i / 4] |= std::uint64_t(words[i] % unsigned(255 * divisor + 1)) << (16 * (i % 4));
            plain.divideSums(one.data(), sums.data(), pixels, divisor);
            fast->divideSums(two.data(), sums.data(), pixels, divisor);
            EXPECT_EQ(one, two) << divisor;
        }
        for (const PixelOrder order : {PixelOrder::BlueFirst, PixelOrder::AlphaFirst}) {
            one = two = premultipliedNoise(pixels, order, 3);
            const auto over = premultipliedNoise(pixels, order, 4);
            plain.blend(one.data(), over.data(), pixels, order);
            fast->blend(two.data(), over.data(), pixels, order);
            EXPECT_EQ(one, two);
        }
    }
}

TEST(PixelRows, BlendIsSourceOverWithRoundingForEveryPairOfBytes)
{
    for (unsigned alpha = 0; alpha < 256; ++alpha) {
        for (unsigned below = 0; below < 256; ++below) {
            std::uint32_t to = 0xFF000000U | below << 16U;
            const std::uint32_t over = alpha << 24U | (alpha / 2) << 16U;
            plainRowFunctions().blend(&to, &over, 1, PixelOrder::BlueFirst);
            const unsigned expected = alpha / 2 + (below * (255 - alpha) * 2 + 255) / 510;
            ASSERT_EQ(to, 0xFF000000U | expected << 16U) << alpha << ' ' << below;
        }
    }
}

} // namespace
