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
    Alsa,        ///< the sound card itself, where no server runs
};

/// One attempt to hear the current sound input. Used by one thread, which may have to wait: a server that hangs
/// lets every state change hang.
///
///     pulsesrc | alsasrc ─► audioconvert ─► audioresample ─► S16LE, 44100 Hz, 2 channels ─► appsink
///
/// All elements run in the source's streaming thread, which calls the consumer from appsink. The pipeline's clock is
/// the system's monotonic clock and the source is not slaved to it: it neither drops nor repeats sound, and its
/// time stamps count the device's time. CaptureClock tells what that is on the monotonic clock.
class SoundPipeline {
public:
    using Consumer = std::function<void(const SoundChunk&)>;

    SoundPipeline(SoundSource source, Consumer consumer); ///< the consumer is called on the streaming thread
    ~SoundPipeline();                                     ///< no call of the consumer is in flight afterwards
    SoundPipeline(const SoundPipeline&) = delete;
    SoundPipeline& operator=(const SoundPipeline&) = delete;

    /// Whether the elements are installed.
    bool isComplete() const { return pipeline_ != nullptr; }
    /// Connects with the server or opens the device's driver.
    bool connect();
    /// Begins to hear. False when there is nothing to hear, or after five seconds.
    bool play();
    /// Whether the server has changed something about the stream since the last call, its device perhaps.
    bool takeChange() { return changed_.exchange(false); }
    /// The server's name of the device that is heard; empty when it is not known, and without a server. Asks the
    /// server, without a bound, so only to be called when it has just been heard of.
    QByteArray device() const;
    /// Waits for the pipeline's end, at most so long. True when the sound has ended, by error or otherwise.
    bool hasEndedWithin(Nanoseconds timeout);

private:
    static void onDeviceNotified(GObject* source, GParamSpec* property, gpointer self);
    static GstFlowReturn onSample(GstAppSink* sink, gpointer self);
    void consume(GstSample* sample);
    std::optional<Nanoseconds> capturedAt(GstBuffer* buffer);

    Consumer consumer_;
    CaptureClock clock_; // the streaming thread's
    GstPtr<GstElement> pipeline_;
    SoundSource kind_;
    std::atomic<bool> changed_ = false;
    GstElement* source_ = nullptr; // the pipeline's
};

} // namespace lumavex
