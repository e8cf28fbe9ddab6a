// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/contract/sound_recorder/SoundFixture.h"

namespace lumavex {
namespace {

TEST_F(SoundRecorderTest, PutsSoundWhereItWasHeard)
{
    const Nanoseconds from = record();
    spin(700ms);
    const auto played = noise(4 * kRate);
    const SoundPlayer player(played);
    spin(1500ms);
    const Nanoseconds heardAt = player.firstFrameHeardAt();
    const Nanoseconds at = now();
    EXPECT_EQ(recorder_->stop(at), QString());

    const RecordedSound sound = readWav(path_);
    ASSERT_EQ(sound.frames(), framesIn(at - from));
    const std::int64_t onset = framesIn(heardAt - from);
    EXPECT_TRUE(sound.isSilent(0, onset - kRate / 50));
    for (const Nanoseconds after : {30ms, 500ms, 1200ms})
        EXPECT_NEAR(lateness(sound, from, heardAt + after, played, heardAt), 0, 20);
    EXPECT_TRUE(troubles_.isEmpty()) << troubles_.join(' ').toStdString();
}

TEST_F(SoundRecorderTest, PausesCutExactly)
{
    const auto played = noise(8 * kRate);
    const SoundPlayer player(played);
    spin(300ms);
    std::vector<std::pair<Nanoseconds, Nanoseconds>> intervals;
    for (const Nanoseconds pause : {300ms, 470ms, 0ms}) {
        const Nanoseconds from = record();
        spin(700ms);
        intervals.emplace_back(from, now());
        recorder_->pause(intervals.back().second);
        spin(pause);
    }
    const Nanoseconds heardAt = player.firstFrameHeardAt();
    EXPECT_EQ(recorder_->stop(now()), QString());

    const RecordedSound sound = readWav(path_);
    Nanoseconds recorded = 0ns;
    std::optional<std::int64_t> late;
    for (const auto& [from, at] : intervals) {
        // The first interval may begin before the device does. Elsewhere the sound is there from the first frame on.
        const Nanoseconds skip = recorded == 0ns ? 500ms : 0ns;
        for (const Nanoseconds into : {skip, at - from - 25ms}) {
            const std::int64_t expected = framesIn(from + into - heardAt);
            const auto place = placeInPlayed(sound, framesIn(recorded + into), played, expected, kRate / 5);
            ASSERT_TRUE(place);
            // Whatever the latency is reported to be, it must be the same on both sides of every cut, but for the
            // slow correction of drift.
            late = late.value_or(expected - *place);
            EXPECT_NEAR(expected - *place, *late, kRate / 200);
        }
        recorded += at - from;
    }
    EXPECT_EQ(sound.frames(), framesIn(recorded));
    EXPECT_EQ(sound.headerFrames, framesIn(recorded));
}

TEST_F(SoundRecorderTest, PathThatCannotBeWrittenIsToldByBothWays)
{
    recorder_ = make(folder_.filePath("none/audio.wav"));
    record();
    EXPECT_TRUE(spinUntilTrouble(2s));
    EXPECT_NE(recorder_->stop(now()), QString());
    spin(50ms);
    ASSERT_EQ(troubles_.size(), 1);
    EXPECT_TRUE(troubles_.front().contains(path_));
}

} // namespace
} // namespace lumavex
