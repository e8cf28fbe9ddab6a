// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/ChangedArea.h"
#include "base/Geometry.h"

#include <QImage>

#include <cstdint>
#include <optional>

namespace lumavex {

/// A picture with a number that changes whenever its pixels do, so that pictures are compared without reading them.
struct NumberedImage {
    QImage image; ///< null: no picture
    std::uint64_t serial = 0;
    friend bool operator==(const NumberedImage& a, const NumberedImage& b)
    {
        return a.serial == b.serial && a.image.size() == b.image.size();
    }
};

/// The screen in a frame: the latest grab, stretched to size_Screen, with the cursor's picture drawn into it, and for
/// the follow-cursor and region types cut to a rectangle that is fitted into size_Screen again. This is only the
/// description; the compositor draws it with a single resampling.
struct ScreenPicture {
    NumberedImage imgScreenCapture;
    ChangeHistory changes; ///< of imgScreenCapture, by its serials; does not affect the appearance of a frame
    CGSize size_Screen;
    QImage imgMouseCursor;         ///< 16 x 16, premultiplied; drawn with its lower-left corner at `cursor`
    std::optional<CGPoint> cursor; ///< std::nullopt: no cursor is drawn
    std::optional<CGRect> cut;     ///< std::nullopt: the whole screen
    bool keepsShape = false;       ///< also in a preview that it would otherwise fill
    friend bool operator==(const ScreenPicture& a, const ScreenPicture& b)
    {
        return a.imgScreenCapture == b.imgScreenCapture && a.size_Screen == b.size_Screen && a.cursor == b.cursor
               && a.cut == b.cut && a.keepsShape == b.keepsShape;
    }
};

/// The picture that fills the frame (i_Video_Source_Primary).
enum VideoSource : std::int64_t { ScreenPrimary = 1, CameraPrimary = 2 };

/// Everything that determines the appearance of a frame. Two equal values of the same size give equal pixels.
struct FrameInputs {
    std::int64_t i_Video_Source_Primary = ScreenPrimary; ///< a VideoSource; anything else draws neither
    std::int64_t i_Show_Secondary = 0;                   ///< not 0: the other source is drawn small
    std::int64_t index_size_Video_Output = 0;
    ScreenPicture screen;
    NumberedImage camera; ///< null image: no camera frame exists
    std::int64_t i_Camera_CRP = 0;
    std::int64_t i_Size_Screen_Secondary = 1;
    std::int64_t i_Position_Screen_Secondary = 8;
    std::int64_t i_Size_Camera_Secondary = 1;
    std::int64_t i_Position_Camera_Secondary = 8;
    bool bOverlay = false;
    NumberedImage imgOverlay;
    std::int64_t i_Size_Overlay = 30;
    std::int64_t i_Position_Overlay = 8;
    friend bool operator==(const FrameInputs&, const FrameInputs&) = default;
};

} // namespace lumavex
