// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/sound/SoundFileWriter.h"

#include <algorithm>
#include <utility>

namespace lumavex {
namespace {

using namespace std::chrono_literals;

constexpr Nanoseconds kWriteInterval = 200ms;
constexpr Nanoseconds kWaitForLastSound = 500ms;
constexpr Nanoseconds kBetweenTries = 50ms;
constexpr int kTriesOnAFullDisk = 20;

} // namespace

SoundFileWriter::SoundFileWriter(const QString& path, std::function<void(const QString&)> onError)
    : file_(path), onError_(std::move(onError)), thread_([this](const std::stop_token& stop) { run(stop); })
{
}

SoundFileWriter::~SoundFileWriter() = default;

void SoundFileWriter::record(Nanoseconds from)
{
    const std::lock_guard lock(mutex_);
    timeline_.record(from);
}

void SoundFileWriter::pause(Nanoseconds at)
{
    const std::lock_guard lock(mutex_);
    timeline_.pause(at);
}

void SoundFileWriter::add(const SoundChunk& chunk)
{
    const std::lock_guard lock(mutex_);
    timeline_.add(chunk);
    soundComing_ = true;
    heard_.notify_all();
}

void SoundFileWriter::soundLost()
{
    const std::lock_guard lock(mutex_);
    timeline_.soundLost();
    soundComing_ = false;
    heard_.notify_all();
}

QString SoundFileWriter::finish(Nanoseconds at)
{
    {
        std::unique_lock lock(mutex_);
        timeline_.pause(at);
        heard_.wait_for(lock, kWaitForLastSound, [this] { return !soundComing_ || timeline_.isHeardToTheEnd(); });
    }
    thread_.request_stop();
    thread_.join();
    std::vector<std::int16_t> rest;
    std::int64_t length = 0;
    {
        const std::lock_guard lock(mutex_); // sound goes on coming until the input is closed
        timeline_.finish(rest);
        length = timeline_.length();
    }
    write(rest);
    // A full disk has free space again once the movie writer frees its reserve.
    for (int tries = 0; file_.mayBeWrittenLater() && tries < kTriesOnAFullDisk; ++tries) {
        std::this_thread::sleep_for(kBetweenTries);
        file_.append({});
    }
    file_.truncate(length);
    file_.close();
    return file_.error();
}

void SoundFileWriter::run(const std::stop_token& stop)
{
    std::vector<std::int16_t> samples;
    std::condition_variable_any tick;
    Nanoseconds now = monotonicNow();
    do {
        write(samples);
        samples.clear();
        std::unique_lock lock(mutex_);
        tick.wait_for(lock, stop, kWriteInterval, [] { return false; });
        // Sound of the time while the process stood still is yet to come: decisions catch up at twice real time.
        now = std::min(monotonicNow(), now + 2 * kWriteInterval);
        timeline_.advance(now, samples);
    } while (!stop.stop_requested());
    write(samples);
}

void SoundFileWriter::write(std::vector<std::int16_t>& samples)
{
    file_.append(samples);
    if (!file_.error().isEmpty() && !std::exchange(errorReported_, true))
        onError_(file_.error());
}

} // namespace lumavex
