// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"

#include "app/LevelMeter.h"
#include "app/Window_Main.h"

namespace lumavex {

void AppDelegate::makeSoundRecorder()
{
    recording.soundRecorder =
        platform_.createSoundRecorder(recording.s_Sound_File_Source, [this](SoundEvent event, const QString& detail) {
            tellSoundEvent(event, detail);
        });
}

void AppDelegate::showSoundLevel(RecordStatus status)
{
    const bool isSound = status != Idle && recording.soundRecorder;
    window_.levelMeter->setVisible(isSound);
    if (isSound && status == Recording)
        window_.levelMeter->setSource([this] { return recording.soundRecorder->takePeaks(); });
    else
        window_.levelMeter->setSource(nullptr);
}

void AppDelegate::tellSoundEvent(SoundEvent event, const QString& detail)
{
    using Kind = RecordingIncidents::Kind;
    constexpr double silenceNoticedAfter = 10;
    const QString input = detail.isEmpty() ? tr("the sound input") : QStringLiteral("\u201c%1\u201d").arg(detail);
    const double now = recording.movieSeconds();
    RecordingIncidents& incidents = recording.incidents;
    switch (event) {
    case SoundEvent::Lost:
        incidents.end(Kind::Silence, now);
        incidents.begin(Kind::SoundLost, now);
        watchFreeSpace(); // on a full disk the sound fails first
        if (stopReason_.isEmpty())
            tell(MessageTopic::Sound, {tr("The recording goes on without sound. %1").arg(detail)});
        break;
    case SoundEvent::Back:
        incidents.end(Kind::SoundLost, now);
        tell(MessageTopic::Sound,
             {tr("The sound is back. It stands in its place in the recording."), {}, Message::Kind::Information});
        break;
    case SoundEvent::Silent:
        incidents.begin(Kind::Silence, now - silenceNoticedAfter);
        tell(MessageTopic::Sound, {tr("No sound arrives from %1. Check in the sound settings that it is the right "
                                      "input and not turned down.")
                                       .arg(input)});
        break;
    case SoundEvent::Muted:
        incidents.begin(Kind::Silence, now - silenceNoticedAfter);
        tell(MessageTopic::Sound,
             {tr("No sound arrives from %1, because it is muted. Switch it on in the sound settings.").arg(input)});
        break;
    case SoundEvent::Heard:
        if (incidents.isOpen(Kind::Silence)) // otherwise another message has replaced it
            window_.withdrawMessage(MessageTopic::Sound);
        incidents.end(Kind::Silence, now);
        break;
    }
}

} // namespace lumavex
