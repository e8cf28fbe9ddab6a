// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/loader/MediaBackends.h"
#include "media/camera/GstCameraSource.h"
#include "media/sound/DesktopSoundSettings.h"
#include "media/sound/GstSoundRecorder.h"

extern "C" {
// The only symbol that the library exports (kMediaBackendsSymbol).
Q_DECL_EXPORT extern const lumavex::MediaBackends lumavexMediaBackends;
}

const lumavex::MediaBackends lumavexMediaBackends = {
    .stamp = LUMAVEX_INTERFACE_STAMP,
    .createCameraSource = lumavex::createGstCameraSource,
    .createSoundSettings = []() -> std::unique_ptr<lumavex::SoundSettings> {
        return std::make_unique<lumavex::DesktopSoundSettings>();
    },
    .createSoundRecorder = lumavex::createGstSoundRecorder,
};
