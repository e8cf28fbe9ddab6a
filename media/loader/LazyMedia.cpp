// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/loader/LazyMedia.h"

#include <QObject>

#include <thread>
#include <utility>

namespace lumavex {
namespace {

class LazyCameraSource final : public CameraSource {
public:
    explicit LazyCameraSource(MediaLoader load) : load_(std::move(load)) {}

    void beginListing() override
    {
        if (cameras_)
            cameras_->beginListing();
        else if (!loading_.joinable())
            loading_ = std::jthread([this] {
                load_();
                QMetaObject::invokeMethod(
                    &context_,
                    [this] {
                        if (CameraSource* const cameras = loaded())
                            cameras->beginListing();
                    },
                    Qt::QueuedConnection);
            });
    }

    QString trouble() override
    {
        CameraSource* const cameras = loaded();
        return cameras ? cameras->trouble() : load_().trouble;
    }

    QStringList names() override
    {
        CameraSource* const cameras = loaded();
        return cameras ? cameras->names() : QStringList();
    }

    QString open(const CameraRequest& request) override
    {
        if (CameraSource* const cameras = loaded())
            return cameras->open(request);
        ++refusedOpenings_;
        return load_().trouble;
    }

    QString beginOpening(const CameraRequest& request, OutcomeHandler outcome) override
    {
        if (CameraSource* const cameras = loaded())
            return cameras->beginOpening(request, std::move(outcome));
        ++refusedOpenings_;
        return load_().trouble;
    }

    void stop() override
    {
        if (cameras_)
            cameras_->stop();
    }

    std::uint64_t currentSource() const override { return cameras_ ? cameras_->currentSource() : refusedOpenings_; }

    void setFrameHandler(FrameHandler handler) override
    {
        if (cameras_)
            cameras_->setFrameHandler(std::move(handler));
        else
            frameHandler_ = std::move(handler);
    }

    void setPresenceHandler(PresenceHandler handler) override
    {
        if (cameras_)
            cameras_->setPresenceHandler(std::move(handler));
        else
            presenceHandler_ = std::move(handler);
    }

private:
    /// Null when the library cannot be loaded.
    CameraSource* loaded()
    {
        if (const MediaBackends* const backends = load_().backends; backends && !cameras_) {
            cameras_ = backends->createCameraSource();
            cameras_->setFrameHandler(std::move(frameHandler_));
            cameras_->setPresenceHandler(std::move(presenceHandler_));
        }
        return cameras_.get();
    }

    MediaLoader load_;
    std::unique_ptr<CameraSource> cameras_; ///< null until it is needed
    FrameHandler frameHandler_;             ///< until then
    PresenceHandler presenceHandler_;
    std::uint64_t refusedOpenings_ = 0;
    QObject context_; ///< its end cancels the pending calls of the thread
    std::jthread loading_;
};

class LazySoundSettings final : public SoundSettings {
public:
    explicit LazySoundSettings(MediaLoader load) : load_(std::move(load)) {}

    std::optional<QString> nameOfInput() override
    {
        SoundSettings* const settings = loaded();
        return settings ? settings->nameOfInput() : std::nullopt;
    }

    bool open() override
    {
        SoundSettings* const settings = loaded();
        return settings && settings->open();
    }

private:
    SoundSettings* loaded()
    {
        if (const MediaBackends* const backends = load_().backends; backends && !settings_)
            settings_ = backends->createSoundSettings();
        return settings_.get();
    }

    MediaLoader load_;
    std::unique_ptr<SoundSettings> settings_;
};

/// Reports that there is no sound, like a recorder that cannot write its file.
class NoSoundRecorder final : public SoundRecorder {
public:
    NoSoundRecorder(QString trouble, EventHandler onEvent) : trouble_(std::move(trouble)), onEvent_(std::move(onEvent))
    {
    }

    void record(Nanoseconds) override
    {
        if (!std::exchange(reported_, true) && onEvent_)
            QMetaObject::invokeMethod(
                &context_,
                [this] {
                    if (onEvent_)
                        onEvent_(SoundEvent::Lost, trouble_);
                },
                Qt::QueuedConnection);
    }
    void pause(Nanoseconds) override {}
    QString stop(Nanoseconds) override
    {
        onEvent_ = nullptr;
        return trouble_;
    }
    SoundPeaks takePeaks() override { return {}; }

private:
    QString trouble_;
    EventHandler onEvent_;
    bool reported_ = false;
    QObject context_; ///< its end cancels pending reports
};

} // namespace

std::unique_ptr<CameraSource> createLazyCameraSource(MediaLoader load)
{
    return std::make_unique<LazyCameraSource>(std::move(load));
}

std::unique_ptr<SoundSettings> createLazySoundSettings(MediaLoader load)
{
    return std::make_unique<LazySoundSettings>(std::move(load));
}

SoundRecorderFactory lazySoundRecorderFactory(MediaLoader load)
{
    return [load = std::move(load)](const QString& path,
                                    SoundRecorder::EventHandler onEvent) -> std::unique_ptr<SoundRecorder> {
        const auto& [backends, trouble] = load();
        if (backends)
            return backends->createSoundRecorder(path, std::move(onEvent));
        return std::make_unique<NoSoundRecorder>(trouble, std::move(onEvent));
    };
}

} // namespace lumavex
