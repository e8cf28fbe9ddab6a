// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/options/layeredSettings.h"

#include "app/SettingsTable.h"
#include "camera/CameraState.h"

namespace lumavex {

namespace {

void layCameraName(LayeredUserDefaults& layer, UserDefaults& stored, const LaunchOptions& options,
                   const std::function<QStringList()>& cameraNames)
{
    const QString nameKey = settingKey("s_Camera_Name");
    if (!options.camera.isEmpty()) {
        layer.lay(options.camera, nameKey);
    } else if (options.needsCamera()
               && stored.stringForKey(nameKey).value_or(doNotConnectToCamera) == doNotConnectToCamera) {
        // A request for the camera without a name selects the first one.
        if (const QStringList names = cameraNames(); !names.isEmpty())
            layer.lay(names.first(), nameKey);
    }
}

} // namespace

std::unique_ptr<LayeredUserDefaults> layeredSettings(UserDefaults& stored, const LaunchOptions& options,
                                                     const std::function<QStringList()>& cameraNames)
{
    auto layer = std::make_unique<LayeredUserDefaults>(stored);
    const auto lay = [&layer](const char* name, std::int64_t value) {
        layer->lay(QString::number(value), settingKey(name));
    };
    if (options.framesPerSecond) {
        lay("i_Screen_Capture_FPS", *options.framesPerSecond);
        lay("i_Camera_Capture_FPS", *options.framesPerSecond);
    }
    if (options.sound)
        lay("b_Record_Include_Audio", *options.sound ? 1 : 0);
    if (options.cursor)
        lay("b_Screen_Include_Mouse", *options.cursor ? 1 : 0);
    if (options.source) {
        const bool cameraLarge = *options.source == LaunchOptions::Source::Camera
                                 || *options.source == LaunchOptions::Source::BothCameraLarge;
        const bool both =
            *options.source == LaunchOptions::Source::Both || *options.source == LaunchOptions::Source::BothCameraLarge;
        lay("i_Video_Source_Primary", cameraLarge ? 2 : 1);
        lay("i_Show_Secondary", both ? 1 : 0);
    }
    if (options.cameraSize)
        lay("i_Camera_CRP", *options.cameraSize);
    // Only one of the two sources is the small picture.
    for (const char* name : {"i_Position_Screen_Secondary", "i_Position_Camera_Secondary"})
        if (options.secondaryPosition)
            lay(name, *options.secondaryPosition);
    for (const char* name : {"i_Size_Screen_Secondary", "i_Size_Camera_Secondary"})
        if (options.secondarySize)
            lay(name, *options.secondarySize);
    if (options.overlayPosition)
        lay("i_Position_Overlay", *options.overlayPosition);
    if (options.overlaySize)
        lay("i_Size_Overlay", *options.overlaySize);
    layCameraName(*layer, stored, options, cameraNames);
    return layer;
}

std::unique_ptr<LayeredUserDefaults> layeredChoices(UserDefaults& stored, const LaunchOptions& options)
{
    auto layer = std::make_unique<LayeredUserDefaults>(stored);
    const auto lay = [&layer]<class Value>(const Choice<Value>& choice, const std::optional<Value>& value) {
        if (value)
            layer->lay(QLatin1String(choice.words[static_cast<std::size_t>(*value)]), QLatin1String(choice.key));
    };
    lay(choices::whenWindowGoes, options.whenWindowGoes);
    layer->startingIsOver(); // a first run writes no choices
    return layer;
}

} // namespace lumavex
