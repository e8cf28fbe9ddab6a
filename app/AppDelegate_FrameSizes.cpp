// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"

#include "app/OutputSize.h"
#include "app/Window_Main.h"

#include <QAction>
#include <QMenu>

#include <utility>

namespace lumavex {

namespace {
constexpr std::int64_t outputOffset = 2; ///< the output menu's tags include the two fixed items before the catalogue's
constexpr std::int64_t sizeOfNoItem = 1; ///< output index of a size that the menu does not offer; never stored
} // namespace

void AppDelegate::GetScreenSize()
{
    capture.size_Screen = platform_.screen->sizeOfMainDisplay();
    capture.size_Display = capture.size_Screen;
}

void AppDelegate::FillArrayFrameResolution()
{
    capture.arrayFrameResolution = frameResolutionCatalogue();
    compose.index_size_Video_Output = usableOutputIndex(compose.index_size_Video_Output);
    capture.index_size_Follow_Cursor = usableFollowCursorIndex(capture.index_size_Follow_Cursor);
    capture.index_size_Region = usableRegionIndex(capture.index_size_Region);
}

void AppDelegate::FillSubMenuVideoOutputFrame()
{
    if (compose.followsSource())
        Window_Main::moveCheckMark(compose.mi_last_Video_Output, window_.menuitemVideoOutputScreenResolution);
    fillSizeMenu(*window_.submenuVideoOutputFrame, outputOffset, compose.index_size_Video_Output,
                 compose.mi_last_Video_Output, &AppDelegate::MenuVideoOutputFrameClick);
}

void AppDelegate::FillSubMenuFollowCursorFrame()
{
    fillSizeMenu(*window_.submenuFollowCursorFrame, 0, capture.index_size_Follow_Cursor, capture.mi_last_Follow_Cursor,
                 &AppDelegate::MenuFollowCursorFrameClick);
}

void AppDelegate::FillSubMenuRegionFrame()
{
    fillSizeMenu(*window_.submenuRegionFrame, 0, capture.index_size_Region, capture.mi_last_Region,
                 &AppDelegate::MenuRegionFrameClick);
}

void AppDelegate::fillSizeMenu(QMenu& menu, std::int64_t offset, std::int64_t checkedIndex, QAction*& checkedItem,
                               void (AppDelegate::*click)(QAction*))
{
    const auto earlier = menu.actions().mid(offset);
    if (earlier.contains(checkedItem))
        checkedItem = nullptr;
    qDeleteAll(earlier);
    const std::size_t offered = offeredFrameResolutions(capture.arrayFrameResolution, capture.size_Screen);
    for (std::size_t i = 0; i < offered; ++i) {
        const CGSize size = capture.arrayFrameResolution[i].sizeDimension;
        QAction* item = menu.addAction(
            QStringLiteral("%1x%2").arg(static_cast<int>(size.width)).arg(static_cast<int>(size.height)));
        const auto tag = static_cast<std::int64_t>(i) + offset;
        item->setCheckable(true);
        item->setData(QVariant::fromValue<qlonglong>(tag));
        // A click on the checked item must not uncheck it: only moveCheckMark changes the mark.
        connect(item, &QAction::triggered, this, [this, item, click] { (this->*click)(item); });
        if (tag == checkedIndex)
            Window_Main::moveCheckMark(checkedItem, item);
    }
}

void AppDelegate::setVideoOutputSize(const CGSize& size)
{
    compose.size_Video_Output = size;
    compose.fwVideoOutputRatio = ratioOf(size);
    showSummary();
}

void AppDelegate::MenuVideoOutputFrameClick(QAction* item)
{
    Window_Main::moveCheckMark(compose.mi_last_Video_Output, item);
    const std::int64_t tag = item->data().toLongLong();
    setVideoOutputSize(capture.catalogueSize(tag - outputOffset));
    Refresh_Preview_Window();
    compose.index_size_Video_Output = tag;
    storeInteger("index_size_Video_Output", tag);
}

void AppDelegate::MenuFollowCursorFrameClick(QAction* item)
{
    Window_Main::moveCheckMark(capture.mi_last_Follow_Cursor, item);
    const std::int64_t tag = item->data().toLongLong();
    capture.size_Follow_Cursor = capture.catalogueSize(tag);
    capture.index_size_Follow_Cursor = tag;
    storeInteger("index_size_Follow_Cursor", tag);
}

void AppDelegate::MenuRegionFrameClick(QAction* item)
{
    Window_Main::moveCheckMark(capture.mi_last_Region, item);
    const std::int64_t tag = item->data().toLongLong();
    capture.size_Region = capture.catalogueSize(tag);
    capture.index_size_Region = tag;
    storeInteger("index_size_Region", tag);
}

void AppDelegate::OnMenuVideoOutputScreenResolution()
{
    const bool cameraSize = compose.cameraIsPrimary() && camera.b_Camera_Connected;
    if (cameraSize && camera.size_Camera.width <= 0)
        camera.b_Change_to_Camera_Resolution = true; // its size is unknown before its first frame
    else
        setVideoOutputSize(cameraSize ? camera.size_Camera : capture.size_Screen);
    Refresh_Preview_Window();
    Window_Main::moveCheckMark(compose.mi_last_Video_Output, window_.menuitemVideoOutputScreenResolution);
    compose.index_size_Video_Output = 0;
    storeInteger("index_size_Video_Output", 0);
}

void AppDelegate::setUpOutputSize()
{
    if (compose.followsSource())
        setVideoOutputSize(capture.size_Screen);
    else
        setVideoOutputSize(capture.catalogueSize(compose.index_size_Video_Output - outputOffset));
    if (!options_.size) {
        if (compose.followsSource() && compose.cameraIsPrimary() && compose.showsBoth())
            camera.b_Change_to_Camera_Resolution = options_.source.has_value();
        return;
    }
    const CGSize size = options_.size->width > 0 ? *options_.size : capture.size_Screen;
    if (compose.i_Video_Source_Primary == ScreenPrimary)
        launchProblem = vanishingProblem(capture.size_Screen, size);
    if (!launchProblem.isEmpty())
        return;
    // The size applies to every source until another size is chosen.
    if (compose.mi_last_Video_Output)
        std::exchange(compose.mi_last_Video_Output, nullptr)->setChecked(false);
    compose.index_size_Video_Output = sizeOfNoItem;
    const QString title = QStringLiteral("%1x%2").arg(size.width).arg(size.height);
    const auto items = window_.submenuVideoOutputFrame->actions();
    for (QAction* item : items) {
        if (item->text() != title)
            continue;
        Window_Main::moveCheckMark(compose.mi_last_Video_Output, item);
        compose.index_size_Video_Output = item->data().toLongLong();
    }
    setVideoOutputSize(size);
    camera.b_Change_to_Camera_Resolution = false;
}

} // namespace lumavex
