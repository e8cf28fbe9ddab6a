// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/gstreamer/GstPtr.h"
#include "media/sound/CaptureClock.h"
#include "media/sound/SoundFormat.h"

#include <gst/app/gstappsink.h>

#include <QByteArray>

#include <atomic>
#include <functional>
#include <optional>

namespace lumavex {

enum class SoundSource {
    SoundServer, ///< PulseAudio, or PipeWire in its place
    Alsa,        ///< the sound card itself, when no server runs
};

/// One attempt to record the current sound input. Used by one thread, which may have to wait: when the server hangs,
/// every state change hangs.
///
///     pulsesrc | alsasrc ─► audioconvert ─► audioresample ─► S16LE, 44100 Hz, 2 channels ─► appsink
///
/// All elements run in the source's streaming thread, which calls the consumer from appsink. The pipeline's clock is
/// the system's monotonic clock and the source is not slaved to it: it neither drops nor repeats sound, and its time
/// stamps count the device's time. CaptureClock converts them to the monotonic clock.
class SoundPipeline {
public:
    using Consumer = std::function<void(const SoundChunk&)>;

    SoundPipeline(SoundSource source, Consumer consumer); ///< the consumer is called on the streaming thread
    ~SoundPipeline();                                     ///< no call of the consumer is in progress afterwards
    SoundPipeline(const SoundPipeline&) = delete;
    SoundPipeline& operator=(const SoundPipeline&) = delete;

    /// True when the elements are installed.
    bool isComplete() const { return pipeline_ != nullptr; }
    /// Connects to the server or opens the device's driver.
    bool connect();
    /// Starts to deliver sound. False when there is no input, or after five seconds.
    bool play();
    /// True when the server has changed the stream since the last call, perhaps its device.
    bool takeChange() { return changed_.exchange(false); }
    /// The server's name of the device in use; empty when it is not known, and without a server. Asks the server
    /// without a time limit, so call it only when the server has just responded.
    QByteArray device() const;
    /// Waits for the pipeline's end, at most `timeout`. True when the sound has ended, by an error or otherwise.
    bool hasEndedWithin(Nanoseconds timeout);

private:
    static void onDeviceNotified(GObject* source, GParamSpec* property, gpointer self);
    static GstFlowReturn onSample(GstAppSink* sink, gpointer self);
    void consume(GstSample* sample);
    std::optional<Nanoseconds> capturedAt(GstBuffer* buffer);

    Consumer consumer_;
    CaptureClock clock_; // used by the streaming thread
    GstPtr<GstElement> pipeline_;
    SoundSource kind_;
    std::atomic<bool> changed_ = false;
    GstElement* source_ = nullptr; // owned by the pipeline
};

} // namespace lumavex
