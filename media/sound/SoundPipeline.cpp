// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/sound/SoundPipeline.h"

#include <gst/audio/gstaudiobasesrc.h>
#include <gst/audio/gstaudioclock.h>

#include <array>
#include <utility>

namespace lumavex {
namespace {

// In microseconds, the elements' unit: chunks of 10 ms, and a buffer for sound while this process stands still (the
// server drops sound that finds no space, and nobody counts it). The buffer costs memory, not latency.
constexpr gint64 kChunkMicroseconds = 10'000;
constexpr gint64 kBufferMicroseconds = 10'000'000;

constexpr GstClockTime kStartTimeout = 5 * GST_SECOND;

GstElement* makeSource(SoundSource kind)
{
    GstElement* source = gst_element_factory_make(kind == SoundSource::Alsa ? "alsasrc" : "pulsesrc", nullptr);
    if (!source)
        return nullptr;
    g_object_set(source, "provide-clock", FALSE, "slave-method", GST_AUDIO_BASE_SRC_SLAVE_NONE, "latency-time",
                 kChunkMicroseconds, "buffer-time", kBufferMicroseconds, nullptr);
    if (kind == SoundSource::SoundServer)
        g_object_set(source, "client-name", "Lumavex", nullptr);
    return source;
}

GstElement* makeSink()
{
    GstElement* sink = gst_element_factory_make("appsink", nullptr);
    if (!sink)
        return nullptr;
    const GstPtr<GstCaps> caps(gst_caps_new_simple(
        "audio/x-raw", "format", G_TYPE_STRING, "S16LE", "layout", G_TYPE_STRING, "interleaved", "rate", G_TYPE_INT,
        static_cast<int>(kSoundRate), "channels", G_TYPE_INT, static_cast<int>(kSoundChannels), nullptr));
    g_object_set(sink, "caps", caps.get(), "sync", FALSE, "async", FALSE, nullptr);
    return sink;
}

} // namespace

SoundPipeline::SoundPipeline(SoundSource source, Consumer consumer) : consumer_(std::move(consumer)), kind_(source)
{
    const std::array elements{makeSource(source), gst_element_factory_make("audioconvert", nullptr),
                              gst_element_factory_make("audioresample", nullptr), makeSink()};
    GstPtr<GstElement> pipeline(gst_pipeline_new("sound"));
    bool linked = true;
    GstElement* previous = nullptr;
    for (GstElement* element : elements) {
        linked = linked && element;
        if (element)
            gst_bin_add(GST_BIN(pipeline.get()), element);
        if (linked && previous)
            linked = gst_element_link(previous, element);
        previous = element;
    }
    if (!linked)
        return;
    const GstPtr<GstClock> clock(gst_system_clock_obtain());
    gst_pipeline_use_clock(GST_PIPELINE(pipeline.get()), clock.get());
    GstAppSinkCallbacks callbacks{};
    callbacks.new_sample = &SoundPipeline::onSample;
    gst_app_sink_set_callbacks(GST_APP_SINK(elements.back()), &callbacks, this, nullptr);
    source_ = elements.front();
    if (source == SoundSource::SoundServer)
        g_signal_connect(source_, "notify::current-device", G_CALLBACK(&SoundPipeline::onDeviceNotified), this);
    pipeline_ = std::move(pipeline);
}

SoundPipeline::~SoundPipeline()
{
    if (pipeline_)
        gst_element_set_state(pipeline_.get(), GST_STATE_NULL);
}

bool SoundPipeline::connect()
{
    return gst_element_set_state(pipeline_.get(), GST_STATE_READY) == GST_STATE_CHANGE_SUCCESS;
}

bool SoundPipeline::play()
{
    if (gst_element_set_state(pipeline_.get(), GST_STATE_PLAYING) == GST_STATE_CHANGE_FAILURE)
        return false;
    const GstStateChangeReturn result = gst_element_get_state(pipeline_.get(), nullptr, nullptr, kStartTimeout);
    return result == GST_STATE_CHANGE_SUCCESS || result == GST_STATE_CHANGE_NO_PREROLL;
}

QByteArray SoundPipeline::device() const
{
    if (kind_ != SoundSource::SoundServer)
        return {};
    gchar* name = nullptr;
    g_object_get(source_, "current-device", &name, nullptr);
    const QByteArray device(name);
    g_free(name);
    return device;
}

bool SoundPipeline::hasEndedWithin(Nanoseconds timeout)
{
    const GstPtr<GstBus> bus(gst_element_get_bus(pipeline_.get()));
    const GstPtr<GstMessage> end(
        gst_bus_timed_pop_filtered(bus.get(), static_cast<GstClockTime>(timeout.count()),
                                   static_cast<GstMessageType>(GST_MESSAGE_ERROR | GST_MESSAGE_EOS)));
    return end != nullptr;
}

void SoundPipeline::onDeviceNotified(GObject*, GParamSpec*, gpointer self)
{
    static_cast<SoundPipeline*>(self)->changed_ = true;
}

GstFlowReturn SoundPipeline::onSample(GstAppSink* sink, gpointer self)
{
    const GstPtr<GstSample> sample(gst_app_sink_pull_sample(sink));
    if (!sample)
        return GST_FLOW_EOS;
    static_cast<SoundPipeline*>(self)->consume(sample.get());
    return GST_FLOW_OK;
}

void SoundPipeline::consume(GstSample* sample)
{
    GstBuffer* buffer = gst_sample_get_buffer(sample);
    GstMapInfo map;
    const auto time = capturedAt(buffer);
    if (!time || !gst_buffer_map(buffer, &map, GST_MAP_READ))
        return;
    const bool gap = GST_BUFFER_FLAG_IS_SET(buffer, GST_BUFFER_FLAG_DISCONT);
    consumer_({.capturedAt = *time,
               .samples = {reinterpret_cast<const std::int16_t*>(map.data), map.size / sizeof(std::int16_t)},
               .continuity = gap ? SoundContinuity::AfterGap : SoundContinuity::Follows});
    gst_buffer_unmap(buffer, &map);
}

/// std::nullopt while the device's clock does not run yet.
std::optional<Nanoseconds> SoundPipeline::capturedAt(GstBuffer* buffer)
{
    GstClock* deviceClock = GST_AUDIO_BASE_SRC(source_)->clock;
    const GstClockTime deviceNow = gst_audio_clock_get_time(GST_AUDIO_CLOCK_CAST(deviceClock));
    const Nanoseconds now = monotonicNow();
    if (!GST_CLOCK_TIME_IS_VALID(deviceNow) || deviceNow == 0 || !GST_BUFFER_PTS_IS_VALID(buffer)
        || !GST_BUFFER_DURATION_IS_VALID(buffer))
        return std::nullopt;
    const Nanoseconds begin{GST_BUFFER_PTS(buffer)};
    const Nanoseconds end{GST_BUFFER_PTS(buffer) + GST_BUFFER_DURATION(buffer)};
    return begin + clock_.streamOrigin(now, end, Nanoseconds{deviceNow});
}

} // namespace lumavex
