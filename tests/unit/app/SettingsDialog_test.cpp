// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/RecordingSummary.h"
#include "settings_dialog/FrameThumbnail.h"
#include "settings_dialog/Window_Configurations.h"
#include "tests/unit/app/SourceControls.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QTimer>
#include <QWindow>

using namespace lumavex;
using namespace std::chrono_literals;

namespace {

enum class Answer { Ok, Cancel };

/// The dialog over the whole program, opened by its command and worked by its controls.
struct Settings : SourceControls {
    Window_Configurations* dialog = nullptr; ///< while it is open

    void change(const std::function<void()>& work, Answer answer = Answer::Ok)
    {
        QTimer::singleShot(0, window.get(), [&] {
            dialog = qobject_cast<Window_Configurations*>(QApplication::activeModalWidget());
            ASSERT_TRUE(dialog) << "the dialog did not open";
            work();
            answer == Answer::Ok ? dialog->OnOK() : dialog->OnCancel();
        });
        window->menuPreferences->trigger();
        dialog = nullptr;
    }

    template <class Control>
    Control& control(const char* name) const
    {
        return *dialog->findChild<Control*>(QLatin1String(name));
    }
    void choose(const char* combo, const QString& text) const { control<QComboBox>(combo).setCurrentText(text); }

    /// Frames a second that the view is refreshed.
    double rate() const { return recordedRate(app->recording.i_fps_of_Recording); }
    double recordedRate(std::int32_t nominal) const
    {
        const auto next = loop->nextDeadline(app->compose.timerViewRefresh);
        loop->advance(next - loop->now());
        const auto after = loop->nextDeadline(app->compose.timerViewRefresh);
        EXPECT_NEAR(1e9 / double((after - next).count()), nominal, 1e-3);
        return nominal;
    }
};

TEST_F(Settings, OkStoresInOrderAndIsFoundAtTheNextStart)
{
    ASSERT_TRUE(start(Camera::None));
    window->resize(500, 100);
    const WId nativeWindow = window->winId();
    change([this] {
        store->written.clear();
        control<QCheckBox>("checkOnTopOtherWindows").setChecked(false);
        control<QCheckBox>("check_Invisible").setChecked(true);
        choose("comboScreenFPS", QStringLiteral("24"));
        control<QAbstractButton>("radioScreen2").click();
        control<QSlider>("sliderScreenSize").setValue(3);
        control<QCheckBox>("checkScreenIncludeMouse").setChecked(false);
        control<QAbstractButton>("radioCamera6").click();
        control<QSlider>("sliderCameraSize").setValue(2);
        control<QCheckBox>("checkIncludeAudio").setChecked(false);
        control<QCheckBox>("checkOverlay").setChecked(true);
        control<QAbstractButton>("radioOverlay4").click();
        control<QSlider>("sliderOverlaySize").setValue(12);
        EXPECT_TRUE(store->written.isEmpty()) << "nothing is stored before OK";
    });
    QStringList expected;
    for (const char* name :
         {"i_Top_Other_Windows", "b_Screen_Include_Mouse", "i_Screen_Capture_FPS", "i_Size_Screen_Secondary",
          "i_Position_Screen_Secondary", "i_Camera_Capture_FPS", "s_Camera_Name", "i_Camera_CRP",
          "i_Size_Camera_Secondary", "i_Position_Camera_Secondary", "b_Record_Include_Audio", "i_Video_Source_Primary",
          "i_Show_Secondary", /* no camera is chosen: */ "i_Camera_Capture_FPS", "s_Camera_Name"})
        expected.append(settingKey(name));
    EXPECT_EQ(store->written, expected);
    EXPECT_EQ(rate(), 24);
    EXPECT_FALSE(window->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    EXPECT_FALSE(window->windowHandle()->flags().testFlag(Qt::WindowStaysOnTopHint));
    EXPECT_EQ(window->winId(), nativeWindow) << "the windows in front of it would be left behind";
    EXPECT_TRUE(app->compose.bOverlay);
    EXPECT_EQ(app->compose.i_Position_Overlay, 4);
    EXPECT_EQ(app->compose.i_Size_Overlay, 12);
    EXPECT_TRUE(app->capture.b_Lumavex_Invisible_To_Capture);
    EXPECT_TRUE(window->summary->text().contains(QStringLiteral("24 frames a second")))
        << window->summary->text().toStdString();
    EXPECT_TRUE(window->summary->text().contains(QStringLiteral("no sound")));

    ASSERT_TRUE(launch());
    EXPECT_EQ(app->application.i_Top_Other_Windows, 0);
    EXPECT_EQ(app->capture.m_i_Screen_Capture_FPS, 24);
    EXPECT_EQ(app->compose.i_Position_Screen_Secondary, 2);
    EXPECT_EQ(app->compose.i_Size_Screen_Secondary, 3);
    EXPECT_EQ(app->capture.b_Screen_Include_Mouse, 0);
    EXPECT_EQ(app->compose.i_Position_Camera_Secondary, 6);
    EXPECT_EQ(app->compose.i_Size_Camera_Secondary, 2);
    EXPECT_EQ(app->recording.b_Record_Include_Audio, 0);
    // These last until the program ends.
    EXPECT_FALSE(app->compose.bOverlay);
    EXPECT_EQ(app->compose.i_Position_Overlay, 8);
    EXPECT_EQ(app->compose.i_Size_Overlay, 30);
    EXPECT_FALSE(app->capture.b_Lumavex_Invisible_To_Capture);
}

TEST_F(Settings, CancelLeavesAllButColoursAndOverlay)
{
    ASSERT_TRUE(start(Camera::Running));
    const DialogSettings before = app->dialogSettings();
    const TimerId timer = app->compose.timerViewRefresh;
    QImage logo(4, 2, QImage::Format_ARGB32);
    logo.fill(Qt::magenta);
    const QString path = home.filePath(QStringLiteral("logo.png"));
    ASSERT_TRUE(logo.save(path));
    dialogs->openPaths.push_back(path);
    const std::uint64_t opening = cameras->currentSource();
    change(
        [this] {
            choose("comboScreenFPS", QStringLiteral("7"));
            control<QComboBox>("comboCameraListOfCameras").setCurrentIndex(0);
            control<QAbstractButton>("radioCamera0").click();
            control<QCheckBox>("checkApply").click();
            control<QSlider>("sliderContrast").setValue(70);
            EXPECT_EQ(app->camera.f_ColorControls_Contrast, 7.0F) << "at once";
            control<QAbstractButton>("buttonBrowse").click();
        },
        Answer::Cancel);
    EXPECT_EQ(app->dialogSettings(), before);
    EXPECT_TRUE(store->written.isEmpty());
    EXPECT_EQ(app->compose.timerViewRefresh, timer);
    EXPECT_EQ(cameras->currentSource(), opening);
    EXPECT_TRUE(app->camera.b_Camera_Connected);
    EXPECT_TRUE(app->camera.bApplyColorControls);
    EXPECT_EQ(app->camera.f_ColorControls_Contrast, 7.0F);
    EXPECT_EQ(app->compose.imgOverlay.size(), logo.size());
}

TEST_F(Settings, TheLargerRateIsTheRecordings)
{
    ASSERT_TRUE(start(Camera::Running));
    const auto rates = [this](const char* screenRate, const char* cameraRate) {
        change([&] {
            choose("comboScreenFPS", QLatin1String(screenRate));
            choose("comboCameraFPS", QLatin1String(cameraRate));
        });
        return rate();
    };
    EXPECT_EQ(rates("10", "30"), 30);
    EXPECT_EQ(rates("15", "15"), 15);
    EXPECT_EQ(rates("20", "1"), 20);
    EXPECT_EQ(rates("10", "30"), 30);
    change([this] { control<QComboBox>("comboCameraListOfCameras").setCurrentIndex(0); });
    EXPECT_EQ(rate(), 10);
    EXPECT_EQ(stored("i_Camera_Capture_FPS"), "1");
}

TEST_F(Settings, ARateOfTheCommandLineBeyondTheOfferedOnesHolds)
{
    options.framesPerSecond = 60;
    ASSERT_TRUE(start(Camera::None));
    app->capture.m_i_Screen_Capture_FPS = 60;
    change([] {});
    EXPECT_EQ(rate(), 60);
    change([this] { choose("comboScreenFPS", QStringLiteral("20")); });
    EXPECT_EQ(rate(), 20);
    change([] {});
    EXPECT_EQ(rate(), 20);
}

TEST_F(Settings, EveryOkStartsTheCameraAnewAndItsLastPictureStays)
{
    ASSERT_TRUE(start(Camera::Running));
    FakeCamera other;
    other.name = QStringLiteral("Cam 2");
    cameras->add(other);
    app->camera.arrayCameras.append(other.name);
    give(&Window_Main::toolbarCameraOnly);
    const auto captureIsDisabled = [this] { return !window->toolbarRegion->isEnabled(); };
    const std::uint64_t opening = cameras->currentSource();
    loop->advance(1s);
    const auto* preview = app->compose.windowPreview.get();
    ASSERT_TRUE(preview);
    const TimerId timer = app->compose.timerViewRefresh;
    change([] {});
    EXPECT_EQ(cameras->currentSource(), opening + 1);
    EXPECT_NE(app->compose.timerViewRefresh, timer);
    EXPECT_FALSE(app->camera.imgDeviceCapture.isNull());
    const std::uint64_t last = app->camera.serialCamera;
    EXPECT_TRUE(app->camera.b_Camera_Connected);
    EXPECT_TRUE(captureIsDisabled()) << "the source stays";
    EXPECT_TRUE(until([&] { return app->camera.serialCamera != last; }));
    EXPECT_EQ(app->compose.windowPreview.get(), preview) << "opened anew for a size that did not change";

    change([this] { choose("comboCameraResolution", QStringLiteral("640x480")); });
    EXPECT_EQ(cameras->currentSource(), opening + 2);
    EXPECT_TRUE(until([this] {
        return app->compose.size_Video_Output == CGSize{640, 480};
    })) << "the movie follows the camera's size";
    EXPECT_TRUE(captureIsDisabled());

    change([this] { choose("comboCameraListOfCameras", QStringLiteral("Cam 2")); });
    EXPECT_EQ(cameras->currentSource(), opening + 3);
    EXPECT_EQ(stored("s_Camera_Name"), "Cam 2");

    change([this] { control<QComboBox>("comboCameraListOfCameras").setCurrentIndex(0); });
    EXPECT_FALSE(cameras->isRunning());
    EXPECT_EQ(app->compose.i_Video_Source_Primary, 1);
    EXPECT_EQ(stored("i_Video_Source_Primary"), "2") << "the stored source is left as it was";
    EXPECT_EQ(app->compose.size_Video_Output, screenSize);
    EXPECT_FALSE(captureIsDisabled());
    EXPECT_FALSE(window->menuCameraAlone->isEnabled());
}

TEST_F(Settings, ACameraThatCannotBeStartedIsToldAndForgotten)
{
    ASSERT_TRUE(start(Camera::None));
    FakeCamera busy;
    busy.name = QStringLiteral("Busy");
    busy.refusal = QStringLiteral("The camera Busy is used by another program.");
    cameras->add(busy);
    app->camera.arrayCameras = {busy.name};
    change([this] {
        choose("comboCameraListOfCameras", QStringLiteral("Busy"));
        choose("comboCameraFPS", QStringLiteral("30"));
    });
    ASSERT_TRUE(until([this] { return !dialogs->alerts.empty(); })) << "the dialog is closed by then";
    EXPECT_EQ(dialogs->alerts[0].messageText, "Error");
    EXPECT_EQ(dialogs->alerts[0].informativeText, "Could not start Camera. Change Camera Resolution and try again.");
    EXPECT_EQ(stored("s_Camera_Name"), doNotConnectToCamera.toStdString());
    EXPECT_EQ(stored("i_Camera_Capture_FPS"), "1");
    EXPECT_EQ(rate(), 10);
    EXPECT_EQ(message(), busy.refusal) << "why, besides";
    EXPECT_FALSE(window->menuCameraAlone->isEnabled());
}

TEST_F(Settings, SoundSettingsOpenOrTheInputIsNamed)
{
    ASSERT_TRUE(start(Camera::None));
    change(
        [this] {
            EXPECT_EQ(control<QLabel>("labelSoundInputName").text(), "Microphone");
            control<QPushButton>("buttonSoundPreferences").click();
            EXPECT_EQ(soundSettings->opened, 1);
            soundSettings->canBeOpened = false;
            control<QPushButton>("buttonSoundPreferences").click();
            ASSERT_EQ(dialogs->alerts.size(), 1U);
            EXPECT_TRUE(dialogs->alerts[0].informativeText.contains(QStringLiteral("Microphone")));
            soundSettings->name.reset(); // chosen elsewhere, while the dialog is open
            loop->advance(3s);
            EXPECT_NE(control<QLabel>("labelSoundInputName").text(), "Microphone");
        },
        Answer::Cancel);
}

TEST_F(Settings, TheThumbnailShowsTheFrameAndWhatIsChosen)
{
    ASSERT_TRUE(start(Camera::Running));
    give(&Window_Main::toolbarBothScreenAndCamera);
    loop->advance(1s);
    change(
        [this] {
            const auto middle = [this] {
                const QImage shown = control<FrameThumbnail>("thumbnail").grab().toImage();
                return shown.pixelColor(shown.width() / 2, shown.height() / 4);
            };
            EXPECT_EQ(middle(), QColor(Qt::red));
            paint(Qt::blue);
            loop->advance(1s);
            EXPECT_EQ(middle(), QColor(Qt::blue)) << "it goes on";
            EXPECT_EQ(control<FrameThumbnail>("thumbnail").size(), QSize(288, 216)) << "the frame's shape";
        },
        Answer::Cancel);

    // The camera's outline where the camera will be: a quarter of the width, margin a sixtieth of it.
    const auto outlines = app->outlinesOf(app->dialogSettings(), SettingsSubject::Other);
    ASSERT_EQ(outlines.size(), 1U);
    EXPECT_EQ(outlines[0].of, FrameOutline::Of::Camera);
    EXPECT_NEAR(outlines[0].place.x(), 1 - 1.0 / 60 - 0.25, 1e-6);
    EXPECT_NEAR(outlines[0].place.width(), 0.25, 1e-6);
    EXPECT_NEAR(outlines[0].place.bottom(), 1 - 640.0 / 60 / 480, 1e-6) << "downward";
    EXPECT_EQ(app->outlinesOf(app->dialogSettings(), SettingsSubject::Screen).size(), 2U);
}

TEST_F(Settings, TheThumbnailIsMadeAnewOnlyWhenTheFrameChanges)
{
    struct Paintings : QObject {
        int count = 0;
        bool eventFilter(QObject*, QEvent* event) override
        {
            count += event->type() == QEvent::Paint ? 1 : 0;
            return false;
        }
    } paintings;
    ASSERT_TRUE(start(Camera::None));
    change(
        [&] {
            const auto paintedInASecond = [&] {
                paintings.count = 0;
                loop->advance(1s);
                QApplication::processEvents();
                return paintings.count > 0;
            };
            paintedInASecond();
            control<FrameThumbnail>("thumbnail").installEventFilter(&paintings);
            EXPECT_FALSE(paintedInASecond());
            paint(Qt::blue);
            EXPECT_TRUE(paintedInASecond());
        },
        Answer::Cancel);
}

TEST_F(Settings, NotWhileARecordingExists)
{
    ASSERT_TRUE(start(Camera::None));
    const auto enabled = [this] {
        EXPECT_EQ(window->toolbarPreferences->isEnabled(), window->menuPreferences->isEnabled());
        return window->menuPreferences->isEnabled();
    };
    EXPECT_TRUE(enabled());
    EXPECT_TRUE(window->summary->text().contains(QStringLiteral("10 frames a second")))
        << window->summary->text().toStdString();
    window->menuRecord->trigger();
    EXPECT_FALSE(enabled());
    loop->advance(2s);
    EXPECT_EQ(movie->appends().size(), 20U);
    EXPECT_TRUE(window->summary->text().endsWith(QStringLiteral("20 frames"))) << window->summary->text().toStdString();
    window->menuPause->trigger();
    EXPECT_FALSE(enabled());
    window->menuStop->trigger();
    EXPECT_TRUE(enabled());
    EXPECT_FALSE(window->summary->text().endsWith(QStringLiteral("frames")));
}

} // namespace
