// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Geometry.h"

#include <QImage>

// The picture operations that define frames and camera pictures, as simple separate steps. Compositor and ColorMatrix
// do the same fast and in one pass, and the tests compare them with these. Any thread.

namespace lumavex {

/// The part of the picture inside the rectangle, as a picture of the rectangle's size with edges rounded to whole
/// pixels; outside the picture it is transparent, and the inner part keeps its position. A null picture and a rectangle
/// without pixels give a null picture.
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

/// Applies the controls to a new picture of the same size: the formula of ColorMatrix in floating point.
QImage imageColorControls(const QImage& picture, const ColorControls& controls);

/// Converts a drawable picture to a pixel image and back. A drawable picture may have a scale (device pixels per unit);
/// a pixel image has none: its size is its number of pixels. Pixels are shared, not copied, unless a scale must be
/// removed.
QImage CGImageRefFromImage(const QImage& drawable);
QImage imageFromCGImageRef(const QImage& pixels);

} // namespace lumavex
