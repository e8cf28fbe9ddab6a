// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"

#include "app/ChosenWindow.h"
#include "app/ConnectedCamera.h"
#include "app/Window_Main.h"
#include "base/PictureFile.h"

#include <QAction>

#include <utility>

namespace lumavex {

void AppDelegate::applyCaptureOptions()
{
    if (options_.needsCamera() && !camera.b_Camera_Connected) {
        launchProblem = options_.camera.isEmpty() ? tr("There is no camera to record.") : connectedCamera_->trouble();
        return;
    }
    switch (options_.captureType.value_or(EntireScreen)) {
    case FollowCursor:
        showCaptureType(window_.toolbarFollowCursor, window_.menuFollowCursor);
        capture.size_Follow_Cursor = options_.follow.value_or(capture.catalogueSize(capture.index_size_Follow_Cursor));
        capture.i_Type_Screen_Capture = FollowCursor;
        break;
    case Region:
        if (!options_.region) {
            QMetaObject::invokeMethod(this, &AppDelegate::OnToolbarRegion, Qt::QueuedConnection);
            break;
        }
        capture.rect_Screen_Region = {double(options_.region->x),
                                      capture.size_Screen.height - options_.region->y - options_.region->height,
                                      double(options_.region->width), double(options_.region->height)};
        capture.height_Marked = capture.size_Screen.height;
        showCaptureType(window_.toolbarRegion, window_.menuRegion);
        window_.toolbarRegion->setEnabled(true);
        capture.i_Type_Screen_Capture = Region;
        break;
    case WindowExclusive:
        if (options_.window.isEmpty())
            QMetaObject::invokeMethod(this, &AppDelegate::OnToolbarWindowExclusive, Qt::QueuedConnection);
        else if (const QString problem = chooseWindowByText(options_.window); !problem.isEmpty())
            launchProblem = problem;
        break;
    default:
        break;
    }
}

QString AppDelegate::chooseWindowByText(const QString& text)
{
    updateWindowList();
    for (const WindowEntry& entry : std::as_const(capture.arrayController)) {
        const QString identifier = Return_Window_Identifier_String(entry);
        if (belongsToLumavex(entry) || !identifier.contains(text, Qt::CaseInsensitive))
            continue;
        capture.sWindowExclusive = identifier;
        showCaptureType(window_.toolbarWindowExclusive, window_.menuWindowExclusive);
        capture.i_Type_Screen_Capture = WindowExclusive;
        chosenWindow_->announce();
        return {};
    }
    return tr("There is no window whose name contains \"%1\" (see --list-windows).").arg(text);
}

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
