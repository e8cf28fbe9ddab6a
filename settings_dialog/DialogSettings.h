// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QRectF>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <vector>

namespace lumavex {

/// Values that the settings dialog edits and returns after OK. Numeric switches are on when 1.
struct DialogSettings {
    std::int64_t i_Top_Other_Windows = 0;
    bool b_Lumavex_Invisible_To_Capture = false;
    std::int64_t m_i_Screen_Capture_FPS = 1;
    std::int64_t i_Position_Screen_Secondary = 8; ///< 0 to 8, row by row from the top left; others: no place chosen
    std::int64_t i_Size_Screen_Secondary = 1;
    std::int64_t b_Screen_Include_Mouse = 0;
    bool bOverlay = false;
    std::int64_t i_Position_Overlay = 8;
    std::int64_t i_Size_Overlay = 30; ///< a tenth of its width in the movie, in pixels
    std::int64_t m_i_Camera_Capture_FPS = 1;
    QString s_Camera_Name;
    std::int64_t i_Camera_CRP = 0; ///< resolution code, -1 for none
    std::int64_t i_Position_Camera_Secondary = 8;
    std::int64_t i_Size_Camera_Secondary = 1;
    std::int64_t b_Record_Include_Audio = 0;
    friend bool operator==(const DialogSettings&, const DialogSettings&) = default;
};

/// Values that the dialog changes at once, whether it ends with OK or not.
struct LiveSettings {
    QImage imgOverlay; ///< null: no overlay picture
    bool bApplyColorControls = false;
    float f_ColorControls_Saturation = 10.0F; ///< each is ten times its value
    float f_ColorControls_Brightness = 0.0F;
    float f_ColorControls_Contrast = 10.0F;
};

/// Other values that the dialog offers.
struct DialogChoices {
    QStringList cameras;     ///< the first means no camera
    QString soundInput;      ///< the system's current sound input, or the reason why there is none
    int widestOverlay = 192; ///< i_Size_Overlay of an overlay that is as wide as the movie
};

/// The part of the settings that the dialog shows.
enum class SettingsSubject { Screen, Camera, Overlay, Other };

/// Position of a small picture in the frame.
struct FrameOutline {
    enum class Of { Screen, Camera, Overlay } of = Of::Screen;
    QRectF place; ///< relative to the frame: (0, 0) is its upper-left corner, (1, 1) its lower-right one
    friend bool operator==(const FrameOutline&, const FrameOutline&) = default;
};

} // namespace lumavex
