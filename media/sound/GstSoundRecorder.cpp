// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/sound/GstSoundRecorder.h"

#include "media/sound/SoundFileWriter.h"
#include "media/sound/SoundInput.h"
#include "media/sound/SoundLevel.h"
#include "platform/PlatformText.h"

#include <QObject>
#include <QTimer>

#include <atomic>
#include <optional>
#include <utility>

namespace lumavex {
namespace {

using namespace std::chrono_literals;

/// After this time without sound or a reason, the server counts as not answering.
constexpr auto kOpeningTolerated = 3s;
/// After this much silence the user may have muted or disconnected the input by mistake.
constexpr std::int64_t kSilenceTolerated = 10 * kSoundRate;

///     SoundInput ── chunks, on its thread ──► SoundFileWriter ── its own thread ──► WAV file
///          │                      └─────────► SoundLevel ◄── takePeaks
///          └─────── trouble ──► main thread ──► the handler
class GstSoundRecorder : public SoundRecorder {
public:
    GstSoundRecorder(const QString& path, EventHandler onEvent)
        : onEvent_(std::move(onEvent)),
          writer_(path, [this](const QString& reason) { post([this, reason] { loseFile(reason); }); })
    {
        opening_.setSingleShot(true);
        QObject::connect(&opening_, &QTimer::timeout, &opening_,
                         [this] { loseSound(PlatformText::tr("The sound server does not answer.")); });
    }

    void record(Nanoseconds from) override
    {
        writer_.record(from);
        isRecording_ = true;
        if (input_ || stopped_)
            return;
        opening_.start(kOpeningTolerated);
        input_.emplace(SoundInput::Listener{
            .sound = [this](const SoundChunk& chunk) { hear(chunk); },
            .lost = [this] { stopHearing(); },
            .trouble = [this](const QString& reason) { post([this, reason] { loseSound(reason); }); },
            .described = [this](const CurrentSoundInput& input) { post([this, input] { notifySilence(input); }); }});
    }

    void pause(Nanoseconds at) override
    {
        isRecording_ = false;
        writer_.pause(at);
    }

    QString stop(Nanoseconds at) override
    {
        if (!std::exchange(stopped_, true)) {
            result_ = writer_.finish(at);
            input_.reset();
            opening_.stop();
        }
        return result_;
    }

    SoundPeaks takePeaks() override { return level_.take(); }

private:
    enum class Sound { Expected, Heard, Lost };
    enum class Silence { NotReported, Reported, Over };

    // Called on the input's threads, one at a time.

    void hear(const SoundChunk& chunk)
    {
        if (!std::exchange(hearing_, true))
            post([this] { findSound(); });
        level_.add(chunk.samples);
        if (!isRecording_)
            level_.restartSilence();
        else if (!silenceNoticed_ && level_.silentFrames() >= kSilenceTolerated) {
            silenceNoticed_ = true;
            post([this] { input_->describe(); });
        } else if (silenceNoticed_ && !silenceEnded_
                   && level_.silentFrames() * static_cast<int>(kSoundChannels) < std::ssize(chunk.samples)) {
            silenceEnded_ = true;
            post([this] { endSilence(); });
        }
        writer_.add(chunk);
    }

    void stopHearing()
    {
        hearing_ = false;
        level_.restartSilence();
        writer_.soundLost();
    }

    /// Passes a call from any thread to the main thread, and drops it once the recorder has stopped or ended.
    template <typename Function>
    void post(Function function)
    {
        const auto unlessStopped = [this, function] {
            if (!stopped_)
                function();
        };
        QMetaObject::invokeMethod(&opening_, unlessStopped, Qt::QueuedConnection);
    }

    // Called on the main thread.

    void findSound()
    {
        opening_.stop();
        if (std::exchange(sound_, Sound::Heard) == Sound::Lost)
            notify(SoundEvent::Back, {});
    }

    void loseSound(const QString& reason)
    {
        opening_.stop();
        if (std::exchange(sound_, Sound::Lost) != Sound::Lost)
            notify(SoundEvent::Lost, reason);
    }

    void loseFile(const QString& reason)
    {
        notify(SoundEvent::Lost, reason);
        fileLost_ = true;
    }

    void endSilence()
    {
        if (std::exchange(silence_, Silence::Over) == Silence::Reported)
            notify(SoundEvent::Heard, {});
    }

    void notifySilence(const CurrentSoundInput& input)
    {
        if (silence_ == Silence::Over) // the silence ended before its input was described
            return;
        silence_ = Silence::Reported;
        notify(input.isMuted ? SoundEvent::Muted : SoundEvent::Silent, input.name);
    }

    void notify(SoundEvent event, const QString& detail)
    {
        if (!fileLost_ && onEvent_)
            onEvent_(event, detail);
    }

    EventHandler onEvent_;
    Sound sound_ = Sound::Expected;
    Silence silence_ = Silence::NotReported;
    bool fileLost_ = false; // no event is reported after that
    bool stopped_ = false;
    QString result_;

    std::atomic<bool> isRecording_ = false;
    bool hearing_ = false;        // the input's threads only, like the next two
    bool silenceNoticed_ = false; // reported once
    bool silenceEnded_ = false;
    SoundLevel level_;

    QTimer opening_; // also ties posted calls to the main thread and to the recorder's lifetime
    SoundFileWriter writer_;
    std::optional<SoundInput> input_; // last: its threads use everything above
};

} // namespace

std::unique_ptr<SoundRecorder> createGstSoundRecorder(const QString& path, SoundRecorder::EventHandler onEvent)
{
    return std::make_unique<GstSoundRecorder>(path, std::move(onEvent));
}

} // namespace lumavex
