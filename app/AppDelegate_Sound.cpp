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
    const QString input = detail.isEmpty() ? tr("the sound input") : QStringLiteral("\u201c%1\u201d").arg(detail);
    switch (event) {
    case SoundEvent::Lost:
        watchFreeSpace(); // on a full disk it is the sound that fails first
        if (stopReason_.isEmpty())
            tell(tr("The recording goes on without sound. %1").arg(detail));
        break;
    case SoundEvent::Back:
        tell(tr("The sound is back. It stands in its place in the recording."));
        break;
    case SoundEvent::Silent:
        tell(tr("No sound arrives from %1. Check in the sound settings that it is the right input and not turned down.")
                 .arg(input));
        break;
    case SoundEvent::Muted:
        tell(tr("No sound arrives from %1, because it is muted. Switch it on in the sound settings.").arg(input));
        break;
    }
}

} // namespace lumavex
