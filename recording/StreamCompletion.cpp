// SPDX-License-Identifier: GPL-3.0-or-later
#include "recording/StreamCompletion.h"

#include "recording/RecordedFiles.h"
#include "recording/RecordingText.h"

#include <chrono>
#include <cmath>
#include <memory>

namespace lumavex {

void StreamCompletion::begin(WriterReadiness& readiness, Nanoseconds heardUntil,
                             const std::function<void(float percentage)>& progress)
{
    readiness.waitUntilReady();
    progress(20);
    // The handler runs on a writer thread; the shared state outlives this object in case the program ends early.
    const auto outcome = std::make_shared<std::promise<MovieWriter::Result>>();
    result_ = outcome->get_future().share();
    streams_.writer.finishWritingWithCompletionHandler(
        streams_.end, [&runLoop = runLoop_, outcome](const MovieWriter::Result& result) {
            outcome->set_value(result);
            runLoop.wake();
        });
    progress(30);
    if (streams_.sound)
        soundProblem_ = streams_.sound->stop(heardUntil);
    progress(40);
}

void StreamCompletion::wait()
{
    runLoop_.runUntil([this] { return result_.wait_for(std::chrono::seconds(0)) == std::future_status::ready; });
}

RecordedLengths StreamCompletion::lengths() const
{
    const MovieWriter::Result& result = result_.get();
    RecordedLengths lengths;
    lengths.frames = result.frames;
    if (streams_.sound)
        lengths.soundSeconds = soundSeconds(streams_.soundFile);
    if (result.error.isEmpty())
        lengths.pictureSeconds = CMTimeGetSeconds(CMTimeSubtract(streams_.end, streams_.firstFrame));
    return lengths;
}

QString StreamCompletion::problem() const
{
    const QString& error = result_.get().error;
    return ((error.isEmpty() ? difference(lengths()) : error) + u' ' + soundProblem_).trimmed();
}

QString StreamCompletion::difference(const RecordedLengths& lengths) const
{
    if (lengths.frames != streams_.frames)
        return RecordingText::tr("Of %1 frames %2 are in the movie.").arg(streams_.frames).arg(lengths.frames);
    // In seconds. Missing sound is replaced by silence, so the lengths differ only by the last frame, which lasts its
    // full time whenever Stop is pressed: a second at one frame per second.
    const double tolerance = 1 + 1.0 / streams_.framesPerSecond;
    const double picture = lengths.pictureSeconds.value_or(0);
    const double apart = std::abs(lengths.soundSeconds.value_or(picture) - picture);
    return apart < tolerance ? QString()
                             : RecordingText::tr("Sound and picture differ in length by %1 s.").arg(apart, 0, 'f', 1);
}

} // namespace lumavex
