// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/late/MediaBackends.h"
#include "platform/gstreamer/DesktopSoundSettings.h"
#include "platform/gstreamer/GstCameraSource.h"
#include "platform/gstreamer/GstSoundRecorder.h"

extern "C" {
// The one name that leaves the library (kMediaBackendsSymbol).
Q_DECL_EXPORT extern const lumavex::MediaBackends lumavexMediaBackends;
}

const lumavex::MediaBackends lumavexMediaBackends = {
    .createCameraSource = lumavex::createGstCameraSource,
    .createSoundSettings = []() -> std::unique_ptr<lumavex::SoundSettings> {
        return std::make_unique<lumavex::DesktopSoundSettings>();
    },
    .createSoundRecorder = lumavex::createGstSoundRecorder,
};
