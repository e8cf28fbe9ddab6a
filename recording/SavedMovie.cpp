// SPDX-License-Identifier: GPL-3.0-or-later
#include "recording/SavedMovie.h"

#include "recording/RecordingText.h"

#include <cmath>

namespace lumavex {

namespace {

/// More than the error from rounding to another timescale and from the encoder's sound blocks, less than a user
/// notices.
constexpr double kToleratedSeconds = 0.1;

bool differ(double found, double recorded)
{
    return !(std::abs(found - recorded) <= kToleratedSeconds); // NaN differs
}

} // namespace

QString whatIsMissing(const MovieFacts& found, const RecordedLengths& recorded)
{
    if (!found.error.isEmpty())
        return found.error;
    if (!found.picture)
        return RecordingText::tr("It holds no picture.");
    if (found.picture->samples != recorded.frames)
        return RecordingText::tr("It holds %1 frames of %2.").arg(found.picture->samples).arg(recorded.frames);
    if (recorded.pictureSeconds && differ(found.picture->seconds, *recorded.pictureSeconds))
        return RecordingText::tr("Its picture lasts %1 s instead of %2 s.")
            .arg(found.picture->seconds, 0, 'f', 2)
            .arg(*recorded.pictureSeconds, 0, 'f', 2);
    if (!recorded.soundSeconds)
        return {};
    if (!found.sound)
        return RecordingText::tr("It holds no sound.");
    if (differ(found.sound->seconds, *recorded.soundSeconds))
        return RecordingText::tr("Its sound lasts %1 s instead of %2 s.")
            .arg(found.sound->seconds, 0, 'f', 2)
            .arg(*recorded.soundSeconds, 0, 'f', 2);
    return {};
}

} // namespace lumavex
