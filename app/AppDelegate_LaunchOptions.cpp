// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"

#include <QImageReader>

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
    QImageReader reader(options_.overlay);
    reader.setAutoTransform(true); // photographs say which side is up
    const QImage picture = reader.read();
    if (picture.isNull()) {
        if (launchProblem.isEmpty())
            launchProblem =
                tr("The overlay %1 cannot be read as a picture. %2").arg(options_.overlay, reader.errorString());
        return;
    }
    compose.imgOverlay = picture;
    ++compose.serialOverlay;
    compose.bOverlay = true;
}

} // namespace lumavex
