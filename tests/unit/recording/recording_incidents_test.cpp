// SPDX-License-Identifier: GPL-3.0-or-later
#include "recording/RecordingIncidents.h"

#include <gtest/gtest.h>

using namespace lumavex;

TEST(RecordingIncidents, AreSummedUpByKindInRecordedTime)
{
    using Kind = RecordingIncidents::Kind;
    constexpr double open = -1;
    struct Gap {
        Kind kind;
        double begin;
        double end;
    };
    const struct {
        std::vector<Gap> gaps;
        const char* summary;
    } cases[] = {
        {{}, ""},
        {{{Kind::SoundLost, 42.9, 115.7}}, "1 min 13 s without sound from 0:42 on."},
        {{{Kind::CameraGone, 60, 69}, {Kind::SoundLost, 3, 3.2}},
         "1 s without sound from 0:03 on. Camera gone for 9 s from 1:00 on."},
        {{{Kind::SoundLost, 10, 12}, {Kind::SoundLost, 20, 21}, {Kind::SoundLost, 4000, open}},
         "56 min 43 s without sound in 3 gaps, the first from 0:10 on."},
        {{{Kind::SoundLost, 30, 30}, {Kind::SoundLost, 3661, 3663}},
         "2 s without sound from 1:01:01 on."}, // one paused
        {{{Kind::Silence, -10, open}}, "Nothing heard for 2 h 3 min from the beginning to the end."},
        {{{Kind::CameraGone, 7385, open}}, "Camera gone for 15 s from 2:03:05 to the end."},
        {{{Kind::RegionOutside, 7400, open}}, ""},
    };
    for (const auto& each : cases) {
        RecordingIncidents incidents;
        for (const Gap& gap : each.gaps) {
            incidents.begin(gap.kind, gap.begin);
            incidents.begin(gap.kind, gap.begin + 1); // told again
            if (gap.end != open)
                incidents.end(gap.kind, gap.end);
        }
        EXPECT_EQ(incidents.summary(7400).toStdString(), each.summary);
        incidents.clear();
        EXPECT_EQ(incidents.summary(7400), QString());
    }
}
