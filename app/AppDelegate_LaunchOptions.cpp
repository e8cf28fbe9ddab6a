// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"

#include "base/PictureFile.h"

namespace lumavex {

void AppDelegate::applyColourOptions()
{
    if (!options_.adjustsColours())
        return;
    camera.bApplyColorControls = true;
    camera.f_ColorControls_Saturation = options_.saturation.value_or(camera.f_ColorControls_Saturation);
    camera.f_ColorControls_Brightness = options_.brightness.value_or(camera.f_ColorControls_Brightness);
    camera.f_ColorControls_Contrast = options_.contrast.value_or(camera.f_ColorControls_Contrast);
}

void AppDelegate::applyOverlayOption()
{
    if (options_.overlay.isEmpty())
        return;
    const QImage picture = readPictureFile(options_.overlay);
    if (picture.isNull()) {
        if (launchProblem.isEmpty())
            launchProblem = tr("The overlay %1 cannot be read as a picture. Choose a bmp, gif, jpeg, png or tiff file.")
                                .arg(options_.overlay);
        return;
    }
    compose.imgOverlay = picture;
    ++compose.serialOverlay;
    compose.bOverlay = true;
}

} // namespace lumavex
