// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"

#include "app/ConnectedCamera.h"
#include "app/Window_Main.h"
#include "compose/FrameLayout.h"
#include "settings_dialog/FrameThumbnail.h"
#include "settings_dialog/Window_Configurations.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace lumavex {

namespace {

/// Converts an upward rectangle to a downward one relative to the frame.
QRectF partOfFrame(const CGRect& rect, const CGSize& frame)
{
    return {rect.x / frame.width, 1 - (rect.y + rect.height) / frame.height, rect.width / frame.width,
            rect.height / frame.height};
}

/// A command-line rate that the dialog does not offer applies to this run unless the user chooses another one.
std::int64_t heldRate(std::int64_t chosen, std::int64_t held, const LaunchOptions& options)
{
    const bool offered = held <= Window_Configurations::fastestRate;
    return chosen == 1 && !offered && options.framesPerSecond == held ? held : chosen;
}

/// Calls `copy` with each program value that the dialog edits and the dialog's counterpart.
template <class Program, class Settings, class Copy>
void forEachValue(Program& program, Settings& settings, const Copy& copy)
{
    copy(program.application.i_Top_Other_Windows, settings.i_Top_Other_Windows);
    copy(program.capture.b_Lumavex_Invisible_To_Capture, settings.b_Lumavex_Invisible_To_Capture);
    copy(program.capture.m_i_Screen_Capture_FPS, settings.m_i_Screen_Capture_FPS);
    copy(program.compose.i_Position_Screen_Secondary, settings.i_Position_Screen_Secondary);
    copy(program.compose.i_Size_Screen_Secondary, settings.i_Size_Screen_Secondary);
    copy(program.capture.b_Screen_Include_Mouse, settings.b_Screen_Include_Mouse);
    copy(program.compose.bOverlay, settings.bOverlay);
    copy(program.compose.i_Position_Overlay, settings.i_Position_Overlay);
    copy(program.compose.i_Size_Overlay, settings.i_Size_Overlay);
    copy(program.camera.m_i_Camera_Capture_FPS, settings.m_i_Camera_Capture_FPS);
    copy(program.camera.s_Camera_Name, settings.s_Camera_Name);
    copy(program.camera.i_Camera_CRP, settings.i_Camera_CRP);
    copy(program.compose.i_Position_Camera_Secondary, settings.i_Position_Camera_Secondary);
    copy(program.compose.i_Size_Camera_Secondary, settings.i_Size_Camera_Secondary);
    copy(program.recording.b_Record_Include_Audio, settings.b_Record_Include_Audio);
}

} // namespace

DialogSettings AppDelegate::dialogSettings() const
{
    DialogSettings settings;
    forEachValue(*this, settings, [](const auto& value, auto& shown) { shown = value; });
    return settings;
}

void AppDelegate::storeSettings(const DialogSettings& settings)
{
    DialogSettings chosen = settings;
    chosen.m_i_Screen_Capture_FPS = heldRate(settings.m_i_Screen_Capture_FPS, capture.m_i_Screen_Capture_FPS, options_);
    chosen.m_i_Camera_Capture_FPS = heldRate(settings.m_i_Camera_Capture_FPS, camera.m_i_Camera_Capture_FPS, options_);
    forEachValue(*this, chosen, [](auto& value, const auto& wanted) { value = wanted; });

    storeInteger("i_Top_Other_Windows", settings.i_Top_Other_Windows);
    storeInteger("b_Screen_Include_Mouse", settings.b_Screen_Include_Mouse);
    storeInteger("i_Screen_Capture_FPS", capture.m_i_Screen_Capture_FPS);
    storeInteger("i_Size_Screen_Secondary", settings.i_Size_Screen_Secondary);
    storeInteger("i_Position_Screen_Secondary", settings.i_Position_Screen_Secondary);
    storeInteger("i_Camera_Capture_FPS", camera.m_i_Camera_Capture_FPS);
    storeText("s_Camera_Name", settings.s_Camera_Name);
    storeInteger("i_Camera_CRP", settings.i_Camera_CRP);
    storeInteger("i_Size_Camera_Secondary", settings.i_Size_Camera_Secondary);
    storeInteger("i_Position_Camera_Secondary", settings.i_Position_Camera_Secondary);
    storeInteger("b_Record_Include_Audio", settings.b_Record_Include_Audio);
}

LiveSettings AppDelegate::liveSettings() const
{
    return {compose.imgOverlay, camera.bApplyColorControls, camera.f_ColorControls_Saturation,
            camera.f_ColorControls_Brightness, camera.f_ColorControls_Contrast};
}

void AppDelegate::adoptLiveSettings(const LiveSettings& live)
{
    if (live.imgOverlay.cacheKey() != compose.imgOverlay.cacheKey()) {
        compose.imgOverlay = live.imgOverlay;
        ++compose.serialOverlay;
    }
    camera.bApplyColorControls = live.bApplyColorControls;
    camera.f_ColorControls_Saturation = live.f_ColorControls_Saturation;
    camera.f_ColorControls_Brightness = live.f_ColorControls_Brightness;
    camera.f_ColorControls_Contrast = live.f_ColorControls_Contrast;
    connectedCamera_->updateColours();
}

std::vector<FrameOutline> AppDelegate::outlinesOf(const DialogSettings& settings, SettingsSubject subject) const
{
    using Of = FrameOutline::Of;
    const CGSize frame = compose.size_Video_Output;
    if (frame.width <= 0 || frame.height <= 0)
        return {};
    std::vector<FrameOutline> outlines;
    const bool secondary = compose.showsBoth();
    if (subject == SettingsSubject::Screen || (secondary && compose.cameraIsPrimary()))
        outlines.push_back(
            {Of::Screen, partOfFrame(screenSecondaryRect(frame, settings.i_Size_Screen_Secondary,
                                                         settings.i_Position_Screen_Secondary, capture.displaySize()),
                                     frame)});
    if (subject == SettingsSubject::Camera || (secondary && compose.i_Video_Source_Primary == ScreenPrimary))
        outlines.push_back(
            {Of::Camera, partOfFrame(cameraSecondaryRect(frame, settings.i_Size_Camera_Secondary,
                                                         settings.i_Position_Camera_Secondary, settings.i_Camera_CRP),
                                     frame)});
    if ((subject == SettingsSubject::Overlay || settings.bOverlay) && !compose.imgOverlay.isNull())
        outlines.push_back(
            {Of::Overlay,
             partOfFrame(overlayRect(frame, 10 * settings.i_Size_Overlay, settings.i_Position_Overlay,
                                     {double(compose.imgOverlay.width()), double(compose.imgOverlay.height())}),
                         frame)});
    return outlines;
}

QString AppDelegate::soundInputText() const
{
    return platform_.soundSettings->nameOfInput().value_or(tr("There is no sound input now."));
}

void AppDelegate::openSoundSettings()
{
    if (platform_.soundSettings->open())
        return;
    const std::optional<QString> input = platform_.soundSettings->nameOfInput();
    platform_.dialogs->runAlert(
        {tr("Sound Preferences"),
         (input ? tr("Sound is recorded from %1.").arg(*input) : tr("There is no sound input now.")) + u' '
             + tr("This desktop has no sound settings that Lumavex knows. Choose another input with the desktop's own "
                  "tools, or install pavucontrol."),
         {tr("Close")}});
}

void AppDelegate::OnToolbarSettings()
{
    if (recording.m_RecordStatus != Idle || recording.isEnding())
        return;
    connectedCamera_->list();
    DialogChoices choices;
    choices.cameras = QStringList{doNotConnectToCamera} + camera.arrayCameras;
    choices.soundInput = soundInputText();
    choices.widestOverlay = std::max(1, int(std::lround(compose.size_Video_Output.width / 10)));
    Window_Configurations dialog(
        &window_, *platform_.dialogs, dialogSettings(), liveSettings(), choices,
        [this](const DialogSettings& settings, SettingsSubject subject) { return outlinesOf(settings, subject); });
    connect(&dialog, &Window_Configurations::liveSettingsChanged, this,
            [this, &dialog] { adoptLiveSettings(dialog.live()); });
    connect(&dialog, &Window_Configurations::soundPreferencesWanted, this, &AppDelegate::openSoundSettings);

    // The preview's compositor keeps state between frames, so the small picture needs its own compositor.
    Compositor compositor;
    dialog.thumbnail().setRatio(compose.size_Video_Output.width / compose.size_Video_Output.height);
    std::optional<std::pair<FrameInputs, CGSize>> shown; // and the units in which they are shown
    const auto showFrame = [this, &dialog, &compositor, &shown] {
        if (!isFrameWanted())
            grabScreen();
        // The overlay's width is in units of ten pixels of the movie.
        const CGSize units{compose.size_Video_Output.width / 10, compose.size_Video_Output.height / 10};
        FrameInputs inputs = frameInputs();
        const QSize pixels = dialog.thumbnail().pixelSize();
        if (shown && shown->first == inputs && shown->second == units && dialog.thumbnail().pictureSize() == pixels)
            return; // equal inputs give equal pixels
        dialog.thumbnail().setPicture(compositor.previewPass(inputs, pixels, units));
        shown.emplace(std::move(inputs), units);
    };
    const TimerId timer = platform_.runLoop->scheduleRepeating({1, 5}, RunLoopMode::Common,
                                                               [&showFrame](const TimerFiring&) { showFrame(); });
    // The user chooses the input in another program while this dialog is open.
    const TimerId inputTimer = platform_.runLoop->scheduleRepeating(
        {2, 1}, RunLoopMode::Common, [&](const TimerFiring&) { dialog.setSoundInput(soundInputText()); });
    showFrame();
    const std::int64_t returnCode = dialog.runModal();
    platform_.runLoop->invalidate(timer);
    platform_.runLoop->invalidate(inputTimer);
    if (returnCode != 1)
        return;
    storeSettings(dialog.settings());
    applySettings();
}

void AppDelegate::applySettings()
{
    setWindowLevel();
    storeInteger("i_Video_Source_Primary", compose.i_Video_Source_Primary);
    storeInteger("i_Show_Secondary", compose.i_Show_Secondary);
    connectedCamera_->restart();
}

} // namespace lumavex
