// SPDX-License-Identifier: GPL-3.0-or-later
#include "camera/CameraDelegate.h"

#include "tests/fakes/FakeCameraFrame.h"
#include "tests/fakes/FakeCameraSource.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

namespace lumavex {
namespace {

const QString kName = QStringLiteral("Desk camera");

class CameraDelegateTest : public testing::Test {
protected:
    CameraDelegateTest()
    {
        state.i_Camera_CRP = 5;
        QObject::connect(&camera, &CameraDelegate::pictureTaken, &camera, [this] { ++taken; });
        QObject::connect(&camera, &CameraDelegate::videoCameraStarted, &camera, [this] {
            ++started;
            EXPECT_FALSE(state.imgDeviceCapture.isNull());
        });
        QObject::connect(&camera, &CameraDelegate::cameraPresenceChanged, &camera,
                         [this](bool present) { presence.push_back(present); });
    }
    void add(const FakeCamera& fake) { source.add(fake); }
    /// A camera that sends only what it is told to.
    void addQuiet() { add({.name = kName, .interval = std::nullopt}); }
    void send(QRgb color, QSize size = {640, 480})
    {
        QImage picture(size, QImage::Format_RGB32);
        picture.fill(color);
        source.send(picture);
    }
    static void serve() { QCoreApplication::processEvents(); }

    CameraState state;
    FakeCameraSource source;
    CameraDelegate camera{source, state};
    int taken = 0;
    int started = 0;
    std::vector<bool> presence;
};

TEST_F(CameraDelegateTest, StartsOnlyExactNamesAndKnownResolutions)
{
    EXPECT_FALSE(camera.startCamera(kName));
    EXPECT_TRUE(camera.trouble().contains(kName));
    addQuiet();
    add({.name = QStringLiteral("Busy"), .refusal = QStringLiteral("in use")});
    EXPECT_EQ(camera.enumCameras(), QStringList({kName, QStringLiteral("Busy")}));
    EXPECT_FALSE(camera.startCamera(kName.toLower()));
    EXPECT_FALSE(camera.startCamera(QStringLiteral("Busy")));
    EXPECT_EQ(camera.trouble(), QStringLiteral("in use"));
    for (state.i_Camera_CRP = -1; state.i_Camera_CRP <= 8; ++state.i_Camera_CRP) {
        const bool known = state.i_Camera_CRP >= 0 && state.i_Camera_CRP < 8;
        EXPECT_EQ(camera.startCamera(kName), known) << state.i_Camera_CRP;
        EXPECT_EQ(source.isRunning(), state.i_Camera_CRP >= 0) << "what runs is left alone";
        EXPECT_EQ(camera.trouble().isEmpty(), known);
    }
}

TEST_F(CameraDelegateTest, OnlyTheNewestPictureIsTakenOverByTheMainThread)
{
    addQuiet();
    ASSERT_TRUE(camera.startCamera(kName));
    for (int i = 1; i <= 50; ++i)
        send(qRgb(i, 20, 30));
    EXPECT_EQ(camera.head(), 50U);
    EXPECT_TRUE(state.imgDeviceCapture.isNull()) << "the state belongs to the main thread";
    serve();
    EXPECT_EQ(taken, 1);
    EXPECT_EQ(state.imgDeviceCapture.pixel(639, 479), qRgb(50, 20, 30));
    EXPECT_EQ(state.imgDeviceCapture.format(), QImage::Format_RGB32);
    EXPECT_EQ(state.size_Camera, (CGSize{640, 480}));
    EXPECT_EQ(state.serialCamera, 50U);
    send(qRgb(1, 1, 1));
    serve();
    EXPECT_EQ(taken, 2);
    EXPECT_EQ(started, 1);
}

TEST_F(CameraDelegateTest, PicturesOfAnEarlierStartAreNotTakenForTheNewOnes)
{
    addQuiet();
    ASSERT_TRUE(camera.startCamera(kName));
    send(qRgb(9, 9, 9));
    state.i_Camera_CRP = 3;
    ASSERT_TRUE(camera.startCamera(kName));
    serve();
    EXPECT_EQ(taken, 0);
    QImage stray(64, 64, QImage::Format_RGB32);
    stray.fill(Qt::white);
    const FakeCameraFrame packed(stray, CameraPixels::Bgrx);
    CameraFrame late = packed.frame();
    late.source = source.currentSource() - 1;
    camera.captureOutput_didOutputSampleBuffer_fromConnection(late);
    serve();
    EXPECT_EQ(taken, 0);
    send(qRgb(7, 7, 7), {320, 240});
    serve();
    EXPECT_EQ(state.size_Camera, (CGSize{320, 240}));
    EXPECT_EQ(state.serialCamera, 2U) << "numbers go on";
    EXPECT_EQ(started, 1);
}

TEST_F(CameraDelegateTest, AStartWithoutWaitingTellsItsFailureLaterAndOnlyIfItIsStillWanted)
{
    int failures = 0;
    QObject::connect(&camera, &CameraDelegate::startFailed, &camera, [&failures] { ++failures; });
    EXPECT_FALSE(camera.startCameraWithoutWaiting(kName));
    add({.name = QStringLiteral("Busy"), .refusal = QStringLiteral("in use")});
    addQuiet();
    EXPECT_TRUE(camera.startCameraWithoutWaiting(QStringLiteral("Busy")));
    EXPECT_TRUE(camera.startCameraWithoutWaiting(kName));
    serve();
    EXPECT_EQ(failures, 0) << "of a camera that was given up for another";
    send(qRgb(1, 2, 3));
    serve();
    EXPECT_EQ(taken, 1);
    EXPECT_TRUE(camera.startCameraWithoutWaiting(QStringLiteral("Busy")));
    serve();
    EXPECT_EQ(failures, 1);
    EXPECT_EQ(camera.trouble(), QStringLiteral("in use"));
}

TEST_F(CameraDelegateTest, ColourControlsApplyWhileTheSwitchIsOn)
{
    addQuiet();
    state.f_ColorControls_Saturation = 0;
    ASSERT_TRUE(camera.startCamera(kName));
    send(qRgb(255, 0, 0));
    serve();
    EXPECT_EQ(state.imgDeviceCapture.pixel(5, 5), qRgb(255, 0, 0));
    state.bApplyColorControls = true;
    camera.updateColorControls();
    send(qRgb(255, 0, 0));
    serve();
    EXPECT_EQ(state.imgDeviceCapture.pixel(5, 5), qRgb(54, 54, 54));
    state.bApplyColorControls = false;
    send(qRgb(255, 0, 0));
    serve(); // taking a picture over looks at the switch again
    send(qRgb(255, 0, 0));
    serve();
    EXPECT_EQ(state.imgDeviceCapture.pixel(5, 5), qRgb(255, 0, 0));
}

TEST_F(CameraDelegateTest, TheLastPictureStaysWhenTheCameraVanishesOrIsStopped)
{
    addQuiet();
    ASSERT_TRUE(camera.startCamera(kName));
    send(qRgb(1, 2, 3));
    serve();
    source.remove(kName);
    EXPECT_EQ(presence, std::vector<bool>{false});
    EXPECT_EQ(state.imgDeviceCapture.pixel(0, 0), qRgb(1, 2, 3));
    addQuiet();
    EXPECT_EQ(presence, (std::vector<bool>{false, true}));
    send(qRgb(4, 5, 6));
    serve();
    EXPECT_EQ(state.imgDeviceCapture.pixel(0, 0), qRgb(4, 5, 6));
    EXPECT_TRUE(camera.stopCamera());
    serve();
    EXPECT_TRUE(camera.startCamera(kName));
    EXPECT_EQ(state.imgDeviceCapture.pixel(0, 0), qRgb(4, 5, 6));
}

} // namespace
} // namespace lumavex
