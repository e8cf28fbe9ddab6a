// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/sound/SoundTimeline.h"
#include "media/sound/WavFile.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace lumavex {

/// Writes a timeline's sound to a WAV file on its own thread, five times a second, so that neither the caller nor the
/// sound's thread ever waits for the disk. The timeline limits the sound that the disk cannot accept in time.
class SoundFileWriter {
public:
    /// `onError` is called at most once, on the writer's thread, when the file cannot be written (any more).
    SoundFileWriter(const QString& path, std::function<void(const QString&)> onError);
    ~SoundFileWriter(); ///< without finish(), leaves the file as a killed program would
    SoundFileWriter(const SoundFileWriter&) = delete;
    SoundFileWriter& operator=(const SoundFileWriter&) = delete;

    void record(Nanoseconds from);     ///< any thread, like all of these
    void pause(Nanoseconds at);        ///< does nothing while paused
    void add(const SoundChunk& chunk); ///< never waits for the disk
    void soundLost();                  ///< no more sound is expected for now

    /// Pauses at `at`, waits for sound on its way (half a second at most, not at all when sound is lost) and closes the
    /// file. Empty, or the reason why the file is incomplete. Called once, by the thread that destroys the writer.
    QString finish(Nanoseconds at);

private:
    void run(const std::stop_token& stop);
    void write(std::vector<std::int16_t>& samples);

    std::mutex mutex_; // guards the timeline and soundComing_
    std::condition_variable_any heard_;
    SoundTimeline timeline_;
    bool soundComing_ = false;

    WavFile file_; // used by the thread until it has ended
    bool errorReported_ = false;
    std::function<void(const QString&)> onError_;
    std::jthread thread_; // last: it uses everything above
};

} // namespace lumavex
