// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/sound/SoundInput.h"

#include "media/gstreamer/GstInit.h"
#include "media/sound/SoundPipeline.h"
#include "media/sound/SoundServer.h"
#include "platform/PlatformText.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <utility>

namespace lumavex {
namespace {

using namespace std::chrono_literals;

constexpr Nanoseconds kRetryInterval = 1s;
constexpr Nanoseconds kStreamSilenceTolerated = 3s;
constexpr Nanoseconds kStandstill = 1s;
constexpr Nanoseconds kReleaseTimeout = 1s;
constexpr Nanoseconds kBusPoll = 50ms;
constexpr Nanoseconds kDescriptionTimeout = 1s;

} // namespace

/// State shared by the input and its thread; it outlives the input when the thread hangs.
struct SoundInput::Shared {
    std::mutex mutex; // held while the listener is called
    std::condition_variable changed;
    Listener listener;
    Nanoseconds lastSound{0};
    bool closing = false;
    bool done = false;
    bool descriptionWanted = false;

    bool isClosing()
    {
        const std::lock_guard lock(mutex);
        return closing;
    }
    bool closesWithin(Nanoseconds timeout)
    {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, timeout, [this] { return closing; });
    }
    void sound(const SoundChunk& chunk)
    {
        const std::lock_guard lock(mutex);
        lastSound = monotonicNow();
        if (!closing)
            listener.sound(chunk);
    }
    void lose(const QString& reason)
    {
        const std::lock_guard lock(mutex);
        if (closing)
            return;
        listener.lost();
        listener.trouble(reason);
    }
    Nanoseconds lastHeard()
    {
        const std::lock_guard lock(mutex);
        return lastSound;
    }

    /// Ends the sound of this input; another input follows at once.
    void change()
    {
        const std::lock_guard lock(mutex);
        if (!closing)
            listener.lost();
    }
    void describeIfWanted();

    using Reason = std::optional<QString>; ///< why there is no sound; std::nullopt when nothing is wrong
    Reason listen(SoundPipeline& pipeline);
    Reason attempt();
};

void SoundInput::Shared::describeIfWanted()
{
    {
        const std::lock_guard lock(mutex);
        if (!std::exchange(descriptionWanted, false))
            return;
    }
    auto input = askSoundServer(kDescriptionTimeout);
    if (!input)
        input = CurrentSoundInput{.name = firstAlsaInput().value_or(QString())};
    const std::lock_guard lock(mutex);
    if (!closing)
        listener.described(*input);
}

/// Listens until the sound ends or comes from another input.
SoundInput::Shared::Reason SoundInput::Shared::listen(SoundPipeline& pipeline)
{
    const QString none = PlatformText::tr("There is no sound input: no microphone is "
                                          "connected or switched on.");
    const QString lost = PlatformText::tr("The sound input was lost: the sound server ended "
                                          "or the microphone was unplugged.");
    const QString asleep = PlatformText::tr("The sound input sends nothing: it is asleep, or "
                                            "the sound server does not answer.");
    const Nanoseconds begin = monotonicNow();
    if (!pipeline.play())
        return none;
    QByteArray device = pipeline.device();
    Nanoseconds awakeSince = begin;
    for (Nanoseconds turn = begin; !isClosing();) {
        const Nanoseconds before = std::exchange(turn, monotonicNow());
        if (turn - before > kStandstill)
            awakeSince = turn; // this process stood still, not the server
        const Nanoseconds heard = lastHeard();
        if (pipeline.hasEndedWithin(kBusPoll))
            return heard < begin ? none : lost;
        // The server delivers another input's sound, which has other latencies: the time must be determined anew.
        if (pipeline.takeChange()) {
            const QByteArray formerDevice = std::exchange(device, pipeline.device());
            if (!formerDevice.isEmpty() && !device.isEmpty() && formerDevice != device)
                return std::nullopt;
        }
        if (turn - std::max(awakeSince, heard) > kStreamSilenceTolerated) {
            lose(asleep);        // reported now, since a server that does not answer delays the stream's end
            return std::nullopt; // a stream that continues after a break has lost count of its time
        }
        describeIfWanted();
    }
    return std::nullopt;
}

/// Tries the sources in turn and listens to the first one that connects.
SoundInput::Shared::Reason SoundInput::Shared::attempt()
{
    QString reason = initGStreamer();
    if (!reason.isEmpty())
        return reason;
    reason = PlatformText::tr("There is no sound server: neither PipeWire nor PulseAudio is "
                              "running.");
    for (const SoundSource source : {SoundSource::SoundServer, SoundSource::Alsa}) {
        if (source == SoundSource::Alsa && !firstAlsaInput())
            continue; // alsasrc would open something that is not an input
        SoundPipeline pipeline(source, [this](const SoundChunk& chunk) { sound(chunk); });
        if (!pipeline.isComplete())
            reason = PlatformText::tr("The sound plug-ins of GStreamer are not installed.");
        else if (pipeline.connect())
            return listen(pipeline);
    }
    return reason;
}

SoundInput::SoundInput(Listener listener) : shared_(std::make_shared<Shared>())
{
    shared_->listener = std::move(listener);
    thread_ = std::thread([shared = shared_] { run(shared); });
}

SoundInput::~SoundInput()
{
    std::unique_lock lock(shared_->mutex);
    shared_->closing = true;
    shared_->changed.notify_all();
    const bool done = shared_->changed.wait_for(lock, kReleaseTimeout, [this] { return shared_->done; });
    lock.unlock();
    if (done)
        thread_.join();
    else
        thread_.detach(); // hangs in a server that does not answer; ends by itself when the server does
}

void SoundInput::describe()
{
    const std::lock_guard lock(shared_->mutex);
    shared_->descriptionWanted = true;
}

void SoundInput::run(const std::shared_ptr<Shared>& shared)
{
    for (bool closing = false; !closing;) {
        if (const Shared::Reason reason = shared->attempt()) {
            shared->lose(*reason);
            closing = shared->closesWithin(kRetryInterval);
        } else {
            shared->change();
            closing = shared->isClosing();
        }
    }
    const std::lock_guard lock(shared->mutex);
    shared->done = true;
    shared->changed.notify_all();
}

} // namespace lumavex
