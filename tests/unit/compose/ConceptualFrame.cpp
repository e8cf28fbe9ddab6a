// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/unit/compose/ConceptualFrame.h"

#include "compose/FrameLayout.h"
#include "compose/ImageHelpers.h"

#include <QPainter>

namespace lumavex {

namespace {

/// A picture without an alpha channel may hold anything in its fourth bytes; a painter wants them full.
QImage opaque(const QImage& picture)
{
    return partOfImage(picture, {0, 0, double(picture.width()), double(picture.height())});
}

QImage transparentCanvas(const CGSize& size)
{
    QImage canvas(int(size.width), int(size.height), QImage::Format_ARGB32_Premultiplied);
    canvas.fill(Qt::transparent);
    return canvas;
}

void draw(QImage& canvas, const QImage& picture, const CGRect& rect)
{
    QPainter painter(&canvas);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(flippedDown(rect, canvas.height()), picture, QRectF(picture.rect()));
}

QImage screenPicture(const ScreenPicture& screen)
{
    const CGRect whole{0, 0, screen.size_Screen.width, screen.size_Screen.height};
    QImage canvas = transparentCanvas(screen.size_Screen);
    if (!screen.imgScreenCapture.image.isNull())
        draw(canvas, opaque(screen.imgScreenCapture.image), whole);
    if (screen.cursor)
        draw(canvas, screen.imgMouseCursor, {screen.cursor->x, screen.cursor->y, 16, 16});
    return screen.cut ? Return_Image_For_Region_IntoRect(partOfImage(canvas, *screen.cut), whole) : canvas;
}

} // namespace

QImage conceptualFrame(const FrameInputs& inputs, FramePass pass, const QSize& size)
{
    const CGSize frame{double(size.width()), double(size.height())};
    const CGRect whole{0, 0, frame.width, frame.height};
    const bool output = pass == FramePass::Output;
    const bool camera = !inputs.camera.image.isNull();
    const bool secondary = inputs.i_Show_Secondary != 0;
    const QImage SP = screenPicture(inputs.screen);
    const QImage CP = opaque(inputs.camera.image);
    const bool fitted = output || inputs.index_size_Video_Output != 0;
    QImage canvas = transparentCanvas(frame);
    if (inputs.i_Video_Source_Primary == 1) {
        draw(canvas, fitted ? Return_Image_For_Region_IntoRect(SP, whole) : SP, whole);
        if (secondary && camera)
            draw(canvas, CP,
                 cameraSecondaryRect(frame, inputs.i_Size_Camera_Secondary, inputs.i_Position_Camera_Secondary,
                                     inputs.i_Camera_CRP));
    } else if (inputs.i_Video_Source_Primary == 2) {
        if (camera)
            draw(canvas, fitted || secondary ? Return_Image_For_Region_IntoRect(CP, whole) : CP, whole);
        if (secondary)
            draw(canvas, SP,
                 screenSecondaryRect(frame, inputs.i_Size_Screen_Secondary, inputs.i_Position_Screen_Secondary,
                                     inputs.screen.size_Screen));
    }
    if (inputs.bOverlay)
        draw(canvas, inputs.imgOverlay.image,
             overlayRect(frame, inputs.i_Size_Overlay * (output ? 10 : 1), inputs.i_Position_Overlay,
                         {double(inputs.imgOverlay.image.width()), double(inputs.imgOverlay.image.height())}));
    return canvas;
}

} // namespace lumavex
