// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/lazy/MediaBackends.h"
#include "platform/gstreamer/DesktopSoundSettings.h"
#include "platform/gstreamer/GstCameraSource.h"
#include "platform/gstreamer/GstSoundRecorder.h"

extern "C" {
// The one name that leaves the library (kMediaBackendsSymbol).
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
