// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/gstreamer/GstSoundRecorder.h"

#include "platform/gstreamer/SoundFileWriter.h"
#include "platform/gstreamer/SoundInput.h"

#include <QCoreApplication>
#include <QObject>
#include <QTimer>

#include <optional>
#include <utility>

namespace lumavex {
namespace {

using namespace std::chrono_literals;

/// After so long without a sound or a reason, the server is taken for one that does not answer.
constexpr auto kOpeningTolerated = 3s;

///     SoundInput ── chunks, on its thread ──► SoundFileWriter ── its own thread ──► WAV file
///          └─────── trouble ──► main thread ──► the handler, once
class GstSoundRecorder : public SoundRecorder {
public:
    GstSoundRecorder(const QString& path, TroubleHandler onTrouble)
        : onTrouble_(std::move(onTrouble)), writer_(path, [this](const QString& reason) { post(reason); })
    {
        opening_.setSingleShot(true);
        QObject::connect(&opening_, &QTimer::timeout, &opening_, [this] {
            tell(QCoreApplication::translate("SoundRecorder", "The sound server does not answer."));
        });
    }

    void record(Nanoseconds from) override
    {
        writer_.record(from);
        if (input_ || stopped_)
            return;
        opening_.start(kOpeningTolerated);
        input_.emplace(SoundInput::Listener{.sound = [this](const SoundChunk& chunk) { hear(chunk); },
                                            .lost = [this] { writer_.soundLost(); },
                                            .trouble = [this](const QString& reason) { post(reason); }});
    }

    void pause(Nanoseconds at) override { writer_.pause(at); }

    QString stop(Nanoseconds at) override
    {
        if (!std::exchange(stopped_, true)) {
            result_ = writer_.finish(at);
            input_.reset();
            opening_.stop();
        }
        return result_;
    }

private:
    void hear(const SoundChunk& chunk)
    {
        if (!std::exchange(heard_, true))
            QMetaObject::invokeMethod(&opening_, &QTimer::stop, Qt::QueuedConnection);
        writer_.add(chunk);
    }

    /// From any thread to the main thread; nothing is delivered after the recorder's end.
    void post(const QString& reason)
    {
        QMetaObject::invokeMethod(
            &opening_, [this, reason] { tell(reason); }, Qt::QueuedConnection);
    }

    void tell(const QString& reason)
    {
        opening_.stop();
        if (!std::exchange(told_, true) && onTrouble_)
            onTrouble_(reason);
    }

    TroubleHandler onTrouble_;
    bool told_ = false;
    bool stopped_ = false;
    bool heard_ = false; // the sound's thread only
    QString result_;
    QTimer opening_; // also what ties posted calls to the main thread and to the recorder's life
    SoundFileWriter writer_;
    std::optional<SoundInput> input_; // last: its threads use all the others
};

} // namespace

std::unique_ptr<SoundRecorder> createGstSoundRecorder(const QString& path, SoundRecorder::TroubleHandler onTrouble)
{
    return std::make_unique<GstSoundRecorder>(path, std::move(onTrouble));
}

} // namespace lumavex
