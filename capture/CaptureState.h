// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/ChangedArea.h"
#include "capture/FrameDimension.h"
#include "capture/WindowList.h"

#include <QImage>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

class QAction;

namespace lumavex {

/// Type of screen capture, the value of i_Type_Screen_Capture.
enum ScreenCaptureType : std::int64_t {
    EntireScreen = 0,
    FollowCursor = 1,
    Region = 2,
    WindowExclusive = 3,
};

/// The screen part of the program's state. Main thread. Sizes and rectangles in device pixels, upward.
struct CaptureState {
    CGSize size_Screen;  ///< main display at start-up, or when the user last had it measured
    CGSize size_Display; ///< current main display; no size before the first query
    CGSize displaySize() const { return size_Display.width > 0 ? size_Display : size_Screen; }

    std::vector<FrameDimension> arrayFrameResolution; ///< the catalogue
    std::int64_t index_size_Follow_Cursor = 0;        ///< catalogue index, as stored
    std::int64_t index_size_Region = 0;               ///< catalogue index, as stored
    CGSize size_Follow_Cursor;
    CGSize size_Region;
    QAction* mi_last_Follow_Cursor = nullptr; ///< the checked item of each size menu; null: none is checked
    QAction* mi_last_Region = nullptr;

    std::int64_t i_Type_Screen_Capture = EntireScreen; ///< a ScreenCaptureType
    std::int64_t m_i_Screen_Capture_FPS = 0;           ///< as stored; below 1 counts as 1
    std::int64_t b_Screen_Include_Mouse = 0;           ///< 1: the cursor is drawn into the screen picture
    bool b_Lumavex_Invisible_To_Capture = false;       ///< the program's own windows are left out

    /// True when windows are composed, instead of the display being read.
    bool isComposite() const { return i_Type_Screen_Capture == WindowExclusive || b_Lumavex_Invisible_To_Capture; }

    QImage imgMouseCursor;
    QImage imgScreenCapture;          ///< the latest successful grab; null until the first
    std::uint64_t serialScreen = 0;   ///< changes with imgScreenCapture's pixels
    ChangeHistory screenChanges;      ///< area in which imgScreenCapture differs from earlier ones, by serialScreen
    QImage imgScreenCaptureToDraw;    ///< grab of the latest frame; cursor and cut are in the frame's inputs
    CGRect rect_Screen_Follow_Cursor; ///< of the latest frame in follow-cursor mode
    CGSize size_Grab;                 ///< of imgScreenCapture when it shows the main display; else no size
    CGRect rect_Screen_Region;        ///< set by the region selector
    double height_Marked = 0; ///< height of the main display when rect_Screen_Region was set; 0: the current one
    /// The region on a main display of another size: it keeps its distance from the top left corner, like windows.
    CGRect regionOn(const CGSize& display) const
    {
        CGRect region = rect_Screen_Region;
        region.y += height_Marked > 0 ? display.height - height_Marked : 0;
        return region;
    }

    std::uint32_t listOptions = 0;  ///< WindowListOptions of arrayController
    std::uint32_t imageOptions = 0; ///< WindowImageOptions of a window composite
    CGRect imageBounds;             ///< limits of a window composite

    QList<WindowEntry> arrayController;          ///< the latest enumeration, front to back
    std::uint64_t windowsSerial = 0;             ///< serial of the screen's list in arrayController; 0 before the first
    QList<WindowEntry> arrayWindowsMinusLumavex; ///< windows to grab at this tick
    std::uint64_t windowsMinusLumavexSerial = 0; ///< the windowsSerial that arrayWindowsMinusLumavex was chosen from
    std::optional<QString> windowsMinusLumavexChosen; ///< the window chosen then; std::nullopt: no exclusive capture
    std::optional<std::uint32_t> numberOfWindowExclusive;  ///< number of the chosen window, if it is listed
    std::unique_ptr<WindowListApplierData> windowListData; ///< latest enumeration; holds arrayController's list
    bool b_Refresh_Menu_Windows = false;                   ///< rebuild the window menu at the next enumeration
    std::int64_t i_Menu_Windows_Count = 0;                 ///< window items in the menu
    QAction* mi_last_Window_Exclusive = nullptr;
    std::optional<QString> sWindowExclusive;        ///< identifier of the chosen window
    std::optional<QString> sWindowExclusive_Missed; ///< the chosen window whose absence was reported to the user

    /// `index` must be one of the catalogue's.
    CGSize catalogueSize(std::int64_t index) const
    {
        return arrayFrameResolution.at(static_cast<std::size_t>(index)).sizeDimension;
    }

    std::vector<FrameDimension> arrayScreenPointSquare; ///< the region selector's five handles
};

} // namespace lumavex
