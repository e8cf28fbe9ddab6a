// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"

#include "app/SettingsTable.h"
#include "app/Window_Main.h"

#include <algorithm>
#include <span>

namespace lumavex {

namespace {

/// The settings of a group are read together, and the groups in this order.
enum class ReadGroup { ScreenPicture, SoundAndSource, WindowLevel, GuidesAndCursor, CameraRate, CameraPicture };

struct IntegerSetting {
    const char* name;
    std::int64_t firstRunDefault;
    ReadRule rule;
    ReadGroup group;
    std::int64_t& (*property)(AppDelegate&);
};

#define LUMAVEX_PROPERTY(state, name) [](AppDelegate& app) -> std::int64_t& { return app.state.name; }
#define LUMAVEX_SETTING(state, name, value, rule, group)                                                               \
    {                                                                                                                  \
#name, value, ReadRule::rule, ReadGroup::group, LUMAVEX_PROPERTY(state, name)                                  \
    }

constexpr const char* cameraName = "s_Camera_Name";

// In the order in which the first-run defaults are written; the camera's name comes between the two tables.
const IntegerSetting settingsBeforeCameraName[] = {
    LUMAVEX_SETTING(application, i_Top_Other_Windows, 1, Defaulting, WindowLevel),
    LUMAVEX_SETTING(recording, b_Record_Include_Audio, 1, Plain, SoundAndSource),
    LUMAVEX_SETTING(compose, i_Open_Preview_Window_On_Startup, 1, Plain, SoundAndSource),
    LUMAVEX_SETTING(compose, i_Video_Source_Primary, 1, Plain, SoundAndSource),
    LUMAVEX_SETTING(compose, i_Show_Secondary, 0, Plain, SoundAndSource),
    LUMAVEX_SETTING(compose, index_size_Video_Output, 0, Plain, SoundAndSource),
    {"i_Screen_Capture_FPS", 1, ReadRule::Plain, ReadGroup::ScreenPicture,
     LUMAVEX_PROPERTY(capture, m_i_Screen_Capture_FPS)},
    LUMAVEX_SETTING(compose, i_Size_Screen_Secondary, 1, Plain, ScreenPicture),
    LUMAVEX_SETTING(compose, i_Position_Screen_Secondary, 8, Plain, ScreenPicture),
    LUMAVEX_SETTING(capture, index_size_Follow_Cursor, 3, Plain, ScreenPicture),
    LUMAVEX_SETTING(capture, index_size_Region, 1, Plain, ScreenPicture),
    LUMAVEX_SETTING(application, b_Show_Select_Region_How_To, 1, Defaulting, GuidesAndCursor),
    LUMAVEX_SETTING(application, b_Show_FollowCursor_How_To, 1, Defaulting, GuidesAndCursor),
    LUMAVEX_SETTING(application, b_Show_WindowExclusive_How_To, 1, Defaulting, GuidesAndCursor),
    LUMAVEX_SETTING(capture, b_Screen_Include_Mouse, 1, Defaulting, GuidesAndCursor),
    {"i_Camera_Capture_FPS", 1, ReadRule::Plain, ReadGroup::CameraRate,
     LUMAVEX_PROPERTY(camera, m_i_Camera_Capture_FPS)},
};
const IntegerSetting settingsAfterCameraName[] = {
    LUMAVEX_SETTING(camera, i_Camera_CRP, 0, Plain, CameraPicture),
    LUMAVEX_SETTING(compose, i_Size_Camera_Secondary, 1, Plain, CameraPicture),
    LUMAVEX_SETTING(compose, i_Position_Camera_Secondary, 8, Plain, CameraPicture),
    LUMAVEX_SETTING(compose, i_Size_Overlay, 30, Plain, CameraPicture),
    LUMAVEX_SETTING(compose, i_Position_Overlay, 8, Plain, CameraPicture),
};

#undef LUMAVEX_SETTING
#undef LUMAVEX_PROPERTY

} // namespace

void AppDelegate::writeFirstRunDefaults()
{
    const auto write = [this](std::span<const IntegerSetting> settings) {
        for (const IntegerSetting& setting : settings) {
            setting.property(*this) = setting.firstRunDefault;
            storeInteger(setting.name, setting.firstRunDefault);
        }
    };
    write(settingsBeforeCameraName);
    camera.s_Camera_Name = doNotConnectToCamera;
    storeText(cameraName, doNotConnectToCamera);
    write(settingsAfterCameraName);
}

void AppDelegate::readSettings()
{
    const auto read = [this](ReadGroup group) {
        for (const std::span<const IntegerSetting> settings :
             {std::span<const IntegerSetting>(settingsBeforeCameraName),
              std::span<const IntegerSetting>(settingsAfterCameraName)})
            for (const IntegerSetting& setting : settings)
                if (setting.group == group)
                    setting.property(*this) = readInteger(*platform_.userDefaults, setting.name, setting.rule);
    };
    read(ReadGroup::ScreenPicture);
    read(ReadGroup::SoundAndSource);
    read(ReadGroup::WindowLevel);
    setWindowLevel();
    read(ReadGroup::GuidesAndCursor);
    read(ReadGroup::CameraRate);
    // A name that was never stored counts as no camera.
    camera.s_Camera_Name = platform_.userDefaults->stringForKey(settingKey(cameraName)).value_or(doNotConnectToCamera);
    read(ReadGroup::CameraPicture);
}

void AppDelegate::storeInteger(const char* property, std::int64_t value)
{
    storeText(property, QString::number(value));
}

void AppDelegate::storeText(const char* property, const QString& text)
{
    platform_.userDefaults->setObject_forKey(text, settingKey(property));
}

void AppDelegate::setWindowLevel()
{
    window_.setLevel(application.i_Top_Other_Windows == 1 ? Window_Main::Level::Floating : Window_Main::Level::Normal);
}

} // namespace lumavex
