// SPDX-License-Identifier: GPL-3.0-or-later
#include "settings_dialog/PictureView.h"
#include "tests/unit/settings_dialog/SettingsDialog.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QSlider>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using namespace lumavex;

namespace {

TEST_F(SettingsDialog, WhatIsLoadedUntouchedComesBack)
{
    loaded.i_Top_Other_Windows = 1;
    loaded.m_i_Screen_Capture_FPS = 25;
    loaded.i_Position_Screen_Secondary = 0;
    loaded.i_Size_Screen_Secondary = 3;
    loaded.b_Screen_Include_Mouse = 1;
    loaded.bOverlay = true;
    loaded.i_Position_Overlay = 4;
    loaded.i_Size_Overlay = 300; // wider than the frame
    loaded.m_i_Camera_Capture_FPS = 24;
    loaded.s_Camera_Name = QStringLiteral("Door");
    loaded.i_Camera_CRP = 7;
    loaded.i_Position_Camera_Secondary = 6;
    loaded.i_Size_Camera_Secondary = 0;
    loaded.b_Record_Include_Audio = 1;
    open();
    EXPECT_EQ(window->settings(), loaded);

    loaded.b_Lumavex_Invisible_To_Capture = true;
    loaded.i_Top_Other_Windows = 0;
    loaded.b_Screen_Include_Mouse = 0;
    loaded.bOverlay = false;
    loaded.b_Record_Include_Audio = 0;
    // No button stands for these, so none is on and the code stays.
    loaded.i_Position_Screen_Secondary = 9;
    loaded.i_Position_Overlay = -1;
    open();
    EXPECT_EQ(window->settings(), loaded);
}

TEST_F(SettingsDialog, ValuesTheControlsDoNotOffer)
{
    loaded.m_i_Screen_Capture_FPS = 45;
    loaded.m_i_Camera_Capture_FPS = 0;
    loaded.s_Camera_Name = QStringLiteral("Sold last year");
    loaded.i_Camera_CRP = 8;
    loaded.b_Record_Include_Audio = 2; // shown as on when it is not 0
    loaded.b_Screen_Include_Mouse = 2; // shown as on when it is 1
    open();
    DialogSettings read = window->settings();
    EXPECT_EQ(read.m_i_Screen_Capture_FPS, 1);
    EXPECT_EQ(read.m_i_Camera_Capture_FPS, 1);
    EXPECT_EQ(read.s_Camera_Name, noCamera);
    EXPECT_EQ(read.i_Camera_CRP, -1);
    EXPECT_EQ(read.b_Record_Include_Audio, 1);
    EXPECT_EQ(read.b_Screen_Include_Mouse, 0);

    // Of several cameras of one name the last is selected; without a camera its rate counts as 1.
    loaded.s_Camera_Name = QStringLiteral("Desk");
    loaded.m_i_Camera_Capture_FPS = 24;
    open();
    auto& cameras = control<QComboBox>("comboCameraListOfCameras");
    EXPECT_EQ(cameras.currentIndex(), 3);
    EXPECT_EQ(window->settings().m_i_Camera_Capture_FPS, 24);
    cameras.setCurrentIndex(0);
    EXPECT_EQ(window->settings().m_i_Camera_Capture_FPS, 1);
    EXPECT_FALSE(control<QComboBox>("comboCameraFPS").isEnabled());
}

TEST_F(SettingsDialog, OnePlaceOfAGroupIsOnAfterAnyClick)
{
    open();
    const struct {
        const char* group;
        std::int64_t DialogSettings::*code;
        void (Window_Configurations::*disable)();
    } groups[] = {{"radioScreen", &DialogSettings::i_Position_Screen_Secondary,
                   &Window_Configurations::DisableScreenPositionRadios},
                  {"radioCamera", &DialogSettings::i_Position_Camera_Secondary,
                   &Window_Configurations::DisableCameraPositionRadios},
                  {"radioOverlay", &DialogSettings::i_Position_Overlay, &Window_Configurations::DisableOverlayRadios}};
    for (const auto& [group, code, disable] : groups) {
        (window.get()->*disable)();
        for (int clicked : {0, 1, 2, 3, 4, 5, 6, 7, 8, 8, 0}) {
            const auto button = [&](int i) -> QAbstractButton& {
                return control<QAbstractButton>(qPrintable(QLatin1String(group) + QString::number(i)));
            };
            button(clicked).click();
            EXPECT_EQ(window->settings().*code, clicked) << group;
            for (int i = 0; i < 9; ++i)
                EXPECT_EQ(button(i).isChecked(), i == clicked) << group << i;
        }
    }
}

TEST_F(SettingsDialog, ColoursChangeAtOnceAndHaveDefaults)
{
    live.f_ColorControls_Saturation = 12.5F;
    open();
    int changes = 0;
    QObject::connect(window.get(), &Window_Configurations::liveSettingsChanged, [&changes] { ++changes; });
    EXPECT_EQ(control<QLabel>("labelSaturationValue").text(), "12.5");
    control<QSlider>("sliderBrightness").setValue(-35);
    control<QAbstractButton>("checkApply").click();
    EXPECT_EQ(changes, 2);
    EXPECT_EQ(window->live().f_ColorControls_Saturation, 12.5F);
    EXPECT_EQ(window->live().f_ColorControls_Brightness, -3.5F);
    control<QAbstractButton>("buttonDefaults").click();
    EXPECT_EQ(window->live().f_ColorControls_Saturation, 10.0F);
    EXPECT_EQ(window->live().f_ColorControls_Brightness, 0.0F);
    EXPECT_EQ(window->live().f_ColorControls_Contrast, 10.0F);
    EXPECT_EQ(control<QSlider>("sliderSaturation").value(), 100);
    EXPECT_TRUE(window->live().bApplyColorControls) << "the switch is no colour";
}

TEST_F(SettingsDialog, APictureBecomesTheOverlayAndAnythingElseIsToldInItsPlace)
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("picture.png"));
    QImage picture(6, 4, QImage::Format_RGB32);
    picture.fill(Qt::darkGreen);
    ASSERT_TRUE(picture.save(path));
    open();
    auto& view = control<PictureView>("imageviewOverlay");
    for (int cancelled = 0; cancelled < 2; ++cancelled) {
        if (!cancelled)
            dialogs.openPaths.push_back(path);
        control<QAbstractButton>("buttonBrowse").click();
        EXPECT_EQ(window->live().imgOverlay.size(), picture.size());
        EXPECT_EQ(view.picture().cacheKey(), window->live().imgOverlay.cacheKey());
    }
    QFile letter(path);
    ASSERT_TRUE(letter.open(QIODevice::WriteOnly) && letter.write("Dear Sir") > 0);
    letter.close();
    dialogs.openPaths.push_back(path);
    control<QAbstractButton>("buttonBrowse").click();
    EXPECT_TRUE(window->live().imgOverlay.isNull());
    EXPECT_FALSE(view.accessibleDescription().isEmpty()) << "the view says what is wrong";
}

TEST_F(SettingsDialog, EndsByOkAloneWithOne)
{
    const auto endedBy = [this](const std::function<void()>& what) {
        open();
        QTimer::singleShot(0, window.get(), what);
        return window->runModal();
    };
    EXPECT_EQ(endedBy([this] { window->findChild<QAbstractButton*>()->window()->close(); }), 0);
    EXPECT_EQ(endedBy([this] { QTest::keyClick(window.get(), Qt::Key_Escape); }), 0);
    EXPECT_EQ(endedBy([this] { window->OnCancel(); }), 0);
    EXPECT_EQ(endedBy([this] { QTest::keyClick(window.get(), Qt::Key_Return); }), 1);
}

} // namespace
