// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Geometry.h"
#include "compose/FrameInputs.h"
#include "compose/FrameTick.h"
#include "compose/Window_Preview.h"
#include "platform/MovieWriter.h"
#include "platform/RunLoop.h"

#include <QImage>
#include <QString>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

class QAction;

namespace lumavex {

/// A frame in use: its inputs, and its number within its pass.
struct ComposedFrame {
    FrameInputs inputs;
    std::uint64_t frame = 0;
};

/// A snapshot that has not been offered to the user yet.
struct TakenPicture {
    QString path;               ///< in the picture folder
    CVPixelBufferRef unwritten; ///< its pixels if it could not be written there; else null
};

/// Inputs of a frame, and the preview that shows it. Main thread.
struct ComposeState {
    std::int64_t i_Video_Source_Primary = 0; ///< a VideoSource
    std::int64_t i_Show_Secondary = 0;       ///< 1: the other source is drawn small
    bool cameraIsPrimary() const { return i_Video_Source_Primary == CameraPrimary; }
    bool showsCamera() const { return cameraIsPrimary() || i_Show_Secondary != 0; }
    bool showsScreen() const { return !cameraIsPrimary() || i_Show_Secondary != 0; }
    bool showsBoth() const { return i_Show_Secondary == 1; }
    std::int64_t i_Size_Screen_Secondary = 0;
    std::int64_t i_Position_Screen_Secondary = 0;
    std::int64_t i_Size_Camera_Secondary = 0;
    std::int64_t i_Position_Camera_Secondary = 0;
    std::int64_t i_Size_Overlay = 0;
    std::int64_t i_Position_Overlay = 0;
    QImage imgOverlay;
    std::uint64_t serialOverlay = 0; ///< changes with imgOverlay
    bool bOverlay = false;

    std::int64_t index_size_Video_Output = 0; ///< 0: the primary source's size; 1: a custom one; k from 2: entry k - 2
    bool followsSource() const { return index_size_Video_Output == 0; }
    CGSize size_Video_Output;
    float fwVideoOutputRatio = 1; ///< width / height of size_Video_Output
    QAction* mi_last_Video_Output = nullptr;

    std::int64_t i_Open_Preview_Window_On_Startup = 0;
    std::unique_ptr<Window_Preview> windowPreview; ///< null: no preview window, no frames
    bool b_windowPreview_Visible = false;
    std::optional<QPoint> previewLowerLeft; ///< position of the previous preview, for one that is opened anew
    bool b_Take_Picture = false;            ///< the next frame is to be saved as a snapshot
    QString s_Saved_Take_Picture;           ///< path of the latest snapshot
    TimerId timer_Save_Picture = 0;
    std::vector<TakenPicture> takenPictures; ///< newest last
    bool offersPicture = false;              ///< one of them is being offered

    std::optional<ComposedFrame> previewShown; ///< frame in the view, so that an unchanged frame is not drawn again
    std::optional<ComposedFrame> lastAppended; ///< the latest frame of the recording

    FrameTick frameTick;
    TimerId timerViewRefresh = 0;
    TimerId timerdebug1Second = 0;
    TimerId timer_Open_Preview_Window = 0;
};

} // namespace lumavex
