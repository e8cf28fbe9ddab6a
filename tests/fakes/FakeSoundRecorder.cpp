// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/fakes/FakeSoundRecorder.h"

#include <algorithm>
#include <utility>

namespace lumavex {
namespace {

using Kind = FakeSound::Call::Kind;

class FakeSoundRecorder : public SoundRecorder {
public:
    FakeSoundRecorder(std::shared_ptr<FakeSound> sound, std::shared_ptr<FakeSound::Recording> recording)
        : sound_(std::move(sound)), recording_(std::move(recording))
    {
    }
    ~FakeSoundRecorder() override { recording_->onEvent = nullptr; }

    void record(Nanoseconds from) override
    {
        recording_->calls.push_back({Kind::Record, from});
        if (!std::exchange(recording_->isRecording, true))
            since_ = from;
    }

    void pause(Nanoseconds at) override
    {
        recording_->calls.push_back({Kind::Pause, at});
        end(at);
    }

    QString stop(Nanoseconds at) override
    {
        recording_->calls.push_back({Kind::Stop, at});
        end(at);
        recording_->isStopped = true;
        return sound_->stopError;
    }

    SoundPeaks takePeaks() override { return std::exchange(recording_->peaks, {}); }

private:
    void end(Nanoseconds at)
    {
        if (std::exchange(recording_->isRecording, false))
            recording_->recorded += std::max(at - since_, Nanoseconds(0));
    }

    std::shared_ptr<FakeSound> sound_;
    std::shared_ptr<FakeSound::Recording> recording_;
    Nanoseconds since_{0};
};

} // namespace

SoundRecorderFactory fakeSoundRecorderFactory(std::shared_ptr<FakeSound> sound)
{
    return [sound = std::move(sound)](const QString& path, SoundRecorder::EventHandler onEvent) {
        auto recording = std::make_shared<FakeSound::Recording>();
        recording->path = path;
        recording->onEvent = std::move(onEvent);
        sound->recordings.push_back(recording);
        return std::make_unique<FakeSoundRecorder>(sound, std::move(recording));
    };
}

} // namespace lumavex
