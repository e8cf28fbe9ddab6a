// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/sound/SoundTimeline.h"
#include "media/sound/WavFile.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace lumavex {

/// Brings a timeline's sound into a WAV file on a thread of its own, five times a second, so that neither the caller
/// nor the sound's thread ever waits for the disk. Sound the disk cannot take in time is bounded by the timeline.
class SoundFileWriter {
public:
    /// `onError` is called once at most, on the writer's thread, when the file cannot be written (any more).
    SoundFileWriter(const QString& path, std::function<void(const QString&)> onError);
    ~SoundFileWriter(); ///< ends like a killed program would if finish was not called
    SoundFileWriter(const SoundFileWriter&) = delete;
    SoundFileWriter& operator=(const SoundFileWriter&) = delete;

    void record(Nanoseconds from);     ///< any thread, like all of these
    void pause(Nanoseconds at);        ///< does nothing while paused
    void add(const SoundChunk& chunk); ///< never waits for the disk
    void soundLost();                  ///< no more is to be expected for now

    /// Pauses at `at`, waits for sound on its way (half a second at most, not at all when lost), closes the file.
    /// Empty, or why the file is not complete. Called once, by the thread that destroys the writer.
    QString finish(Nanoseconds at);

private:
    void run(const std::stop_token& stop);
    void write(std::vector<std::int16_t>& samples);

    std::mutex mutex_; // guards the timeline and soundComing_
    std::condition_variable_any heard_;
    SoundTimeline timeline_;
    bool soundComing_ = false;

    WavFile file_; // the thread's, until it has ended
    bool errorTold_ = false;
    std::function<void(const QString&)> onError_;
    std::jthread thread_; // last: it uses all the others
};

} // namespace lumavex
