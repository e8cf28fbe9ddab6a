// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Geometry.h"

#include <QImage>

// The picture operations that frames and camera pictures are defined by, done plainly, one after the other. Compositor
// and ColorMatrix do the same in one go and fast, and the tests hold them to these. Any thread.

namespace lumavex {

/// The picture's part inside the rectangle as a picture of the rectangle's size, edges rounded to whole pixels; what
/// lies outside the picture is transparent and the inside part stays in its place. A null picture gives a null picture,
/// and so does a rectangle without pixels.
QImage partOfImage(const QImage& picture, const CGRect& rect);

/// A black canvas of the rectangle's size (rounded to whole pixels) with the picture drawn by the stepping fit; the
/// picture itself, not a copy, when its width is 0.
QImage Return_Image_For_Region_IntoRect(const QImage& picture, const CGRect& rect);

/// The colour controls, each ten times its value: saturation 10, brightness 0, contrast 10 change no pixel.
struct ColorControls {
    float f_ColorControls_Saturation = 10.0F;
    float f_ColorControls_Brightness = 0.0F;
    float f_ColorControls_Contrast = 10.0F;
    friend bool operator==(const ColorControls&, const ColorControls&) = default;
};

/// A new picture of the same size with the controls applied, which is the formula of ColorMatrix in floating point.
QImage imageColorControls(const QImage& picture, const ColorControls& controls);

/// Drawable to pixel image and back. A drawable picture may carry a scale (device pixels per unit); a pixel image
/// carries none: its size is its number of pixels. Pixels are shared, not copied, unless there is a scale to take off.
QImage CGImageRefFromImage(const QImage& drawable);
QImage imageFromCGImageRef(const QImage& pixels);

} // namespace lumavex
