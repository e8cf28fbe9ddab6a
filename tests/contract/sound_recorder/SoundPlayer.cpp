// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/contract/sound_recorder/SoundPlayer.h"

#include "media/gstreamer/GstInit.h"

#include <gst/app/gstappsrc.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <thread>

namespace lumavex {

SoundPlayer::SoundPlayer(const std::vector<std::int16_t>& samples, const char* sink)
{
    initGStreamer();
    // Two seconds lie ready, so that a busy machine tears no hole into what is played.
    // The sink provides the pipeline's clock: nothing is resampled or skipped, and that clock tells what is heard now.
    pipeline_.reset(gst_parse_launch(
        "appsrc name=source format=time max-bytes=0 caps=audio/x-raw,format=S16LE,"
        "layout=interleaved,rate=44100,channels=2 ! pulsesink name=sink client-name=player buffer-time=2000000",
        nullptr));
    const GstPtr<GstElement> source(gst_bin_get_by_name(GST_BIN(pipeline_.get()), "source"));
    const GstPtr<GstElement> output(gst_bin_get_by_name(GST_BIN(pipeline_.get()), "sink"));
    g_object_set(output.get(), "device", sink, nullptr);
    const gsize bytes = samples.size() * sizeof(std::int16_t);
    GstBuffer* buffer = gst_buffer_new_allocate(nullptr, bytes, nullptr);
    gst_buffer_fill(buffer, 0, samples.data(), bytes);
    GST_BUFFER_PTS(buffer) = 0;
    GST_BUFFER_DURATION(buffer) = gst_util_uint64_scale(bytes, GST_SECOND, 4 * 44100);
    gst_element_set_state(pipeline_.get(), GST_STATE_PLAYING);
    gst_app_src_push_buffer(GST_APP_SRC(source.get()), buffer);
    gst_app_src_end_of_stream(GST_APP_SRC(source.get()));
    EXPECT_EQ(gst_element_get_state(pipeline_.get(), nullptr, nullptr, 5 * GST_SECOND), GST_STATE_CHANGE_SUCCESS);
}

SoundPlayer::~SoundPlayer()
{
    gst_element_set_state(pipeline_.get(), GST_STATE_NULL);
}

Nanoseconds SoundPlayer::firstFrameHeardAt() const
{
    const GstPtr<GstClock> clock(gst_element_get_clock(pipeline_.get()));
    const GstClockTime heardNow = gst_clock_get_time(clock.get());
    const Nanoseconds now = std::chrono::steady_clock::now().time_since_epoch();
    return now - Nanoseconds{GST_CLOCK_DIFF(gst_element_get_base_time(pipeline_.get()), heardNow)};
}

Nanoseconds SoundPlayer::steadyFirstFrameHeardAt() const
{
    std::array<Nanoseconds, 21> answers{};
    for (Nanoseconds& answer : answers) {
        answer = firstFrameHeardAt();
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    std::nth_element(answers.begin(), answers.begin() + answers.size() / 2, answers.end());
    return answers[answers.size() / 2];
}

} // namespace lumavex
