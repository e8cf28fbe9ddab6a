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

/// Transparent where nothing is drawn.
class Drawing {
public:
    Drawing(const QSize& pixels, const CGSize& units)
        : image_(pixels, QImage::Format_ARGB32_Premultiplied), units_(units)
    {
        image_.fill(Qt::transparent);
    }
    void draw(const QImage& picture, const CGRect& rect)
    {
        QPainter painter(&image_);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.scale(image_.width() / units_.width, image_.height() / units_.height);
        painter.drawImage(flippedDown(rect, units_.height), picture, QRectF(picture.rect()));
    }
    const QImage& image() const { return image_; }

private:
    QImage image_;
    CGSize units_;
};

QImage screenPicture(const ScreenPicture& screen)
{
    const CGRect whole{0, 0, screen.size_Screen.width, screen.size_Screen.height};
    Drawing canvas({int(whole.width), int(whole.height)}, screen.size_Screen);
    if (!screen.imgScreenCapture.image.isNull())
        canvas.draw(opaque(screen.imgScreenCapture.image), whole);
    if (screen.cursor)
        canvas.draw(screen.imgMouseCursor, {screen.cursor->x, screen.cursor->y, 16, 16});
    return screen.cut ? Return_Image_For_Region_IntoRect(partOfImage(canvas.image(), *screen.cut), whole)
                      : canvas.image();
}

} // namespace

QImage conceptualFrame(const FrameInputs& inputs, FramePass pass, const QSize& size, const CGSize& frame)
{
    const CGRect whole{0, 0, frame.width, frame.height};
    const bool output = pass == FramePass::Output;
    const bool camera = !inputs.camera.image.isNull();
    const bool secondary = inputs.i_Show_Secondary != 0;
    const QImage SP = screenPicture(inputs.screen);
    const QImage CP = opaque(inputs.camera.image);
    const bool fitted = output || inputs.index_size_Video_Output != 0;
    Drawing canvas(size, frame);
    if (!output) { // on screen there is nothing to see through to
        QImage black(1, 1, QImage::Format_RGB32);
        black.fill(Qt::black);
        canvas.draw(black, whole);
    }
    if (inputs.i_Video_Source_Primary == 1) {
        canvas.draw(fitted ? Return_Image_For_Region_IntoRect(SP, whole) : SP, whole);
        if (secondary && camera)
            canvas.draw(CP, cameraSecondaryRect(frame, inputs.i_Size_Camera_Secondary,
                                                inputs.i_Position_Camera_Secondary, inputs.i_Camera_CRP));
    } else if (inputs.i_Video_Source_Primary == 2) {
        if (camera)
            canvas.draw(fitted || secondary ? Return_Image_For_Region_IntoRect(CP, whole) : CP, whole);
        if (secondary)
            canvas.draw(SP, screenSecondaryRect(frame, inputs.i_Size_Screen_Secondary,
                                                inputs.i_Position_Screen_Secondary, inputs.screen.size_Screen));
    }
    if (inputs.bOverlay)
        canvas.draw(inputs.imgOverlay.image,
                    overlayRect(frame, inputs.i_Size_Overlay * (output ? 10 : 1), inputs.i_Position_Overlay,
                                {double(inputs.imgOverlay.image.width()), double(inputs.imgOverlay.image.height())}));
    return canvas.image();
}

} // namespace lumavex
