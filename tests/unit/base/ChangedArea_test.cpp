// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/ChangedArea.h"

#include <gmock/gmock.h>

#include <random>
#include <vector>

namespace {

using namespace lumavex;

std::vector<QRect> rectsOf(const ChangedArea& area)
{
    return {area.begin(), area.end()};
}

bool covers(const ChangedArea& area, int x, int y)
{
    return std::any_of(area.begin(), area.end(), [&](const QRect& rect) { return rect.contains(x, y); });
}

TEST(ChangedArea, CoversWhateverWasAdded)
{
    std::mt19937 random(3);
    const auto next = [&](int below) { return int(random() % unsigned(below)); };
    for (int round = 0; round < 200; ++round) {
        ChangedArea area;
        std::vector<QRect> added;
        for (int i = next(30); i >= 0; --i) {
            added.push_back({next(60), next(60), next(12), next(12)});
            area.add(added.back());
        }
        const ChangedArea rows = area.asRows(5, 7);
        for (int y = 0; y < 75; ++y) {
            bool inRow = false;
            for (int x = 0; x < 75; ++x) {
                const bool wanted =
                    std::any_of(added.begin(), added.end(), [&](const QRect& rect) { return rect.contains(x, y); });
                ASSERT_TRUE(!wanted || covers(area, x, y)) << round;
                inRow = inRow || covers(area, x, y);
            }
            ASSERT_EQ(covers(rows, 5, y), inRow) << round;
        }
        int end = -1;
        for (const QRect& rect : rows) {
            EXPECT_GT(rect.top(), end); // rows between them
            EXPECT_EQ(rect.left(), 5);
            EXPECT_EQ(rect.width(), 7);
            end = rect.bottom() + 1;
        }
    }
}

TEST(ChangedArea, KeepsApartWhatIsFarApartAsLongAsThereIsRoom)
{
    ChangedArea area;
    area.add(QRect());
    EXPECT_TRUE(area.isEmpty());
    for (int i = 0; i < int(ChangedArea::capacity); ++i)
        area.add(QRect(100 * i, 50 * i, 10, 10));
    EXPECT_EQ(rectsOf(area).size(), ChangedArea::capacity);
    area.add(QRect(712, 352, 10, 10)); // joins the nearest
    EXPECT_THAT(rectsOf(area), testing::Contains(QRect(700, 350, 22, 12)));
    ChangedArea touching(QRect(0, 0, 10, 10));
    touching.add(QRect(10, 0, 5, 10));
    touching.add(QRect(3, 3, 2, 2));
    EXPECT_THAT(rectsOf(touching), testing::ElementsAre(QRect(0, 0, 15, 10)));
}

TEST(ChangeHistory, AddsUpWhatChangedSince)
{
    ChangeHistory history;
    EXPECT_EQ(history.latest(), 0U);
    EXPECT_FALSE(history.since(0));
    history.add(5, ChangedArea(QRect(0, 0, 999, 999)));
    history.add(9, ChangedArea(QRect(1, 1, 1, 1)));
    history.add(12, ChangedArea(QRect(50, 50, 2, 2)));
    EXPECT_TRUE(history.since(12)->isEmpty());
    EXPECT_THAT(rectsOf(*history.since(9)), testing::ElementsAre(QRect(50, 50, 2, 2)));
    EXPECT_THAT(rectsOf(*history.since(5)), testing::UnorderedElementsAre(QRect(50, 50, 2, 2), QRect(1, 1, 1, 1)));
    EXPECT_FALSE(history.since(7));
    for (std::uint64_t number = 100; number < 120; ++number)
        history.add(number, ChangedArea(QRect(int(number), 0, 1, 1)));
    EXPECT_FALSE(history.since(12)) << "what has been forgotten must not be taken for unchanged";
    EXPECT_THAT(rectsOf(*history.since(117)), testing::ElementsAre(QRect(118, 0, 2, 1)));
    history.clear();
    EXPECT_FALSE(history.since(119));
}

} // namespace
