// SPDX-License-Identifier: GPL-3.0-or-later
#include "camera/CameraDelegate.h"
#include "platform/gstreamer/GstCameraCaps.h"
#include "platform/gstreamer/GstCameraList.h"
#include "platform/gstreamer/GstInit.h"
#include "tests/contract/camera_source/CameraWorlds.h"

namespace lumavex {
namespace {

const QString kName = QStringLiteral("StudioCamera");

ListedCamera listed(const char* name, CameraService service, const char* place = "")
{
    return {QString::fromUtf8(name), service, place, {}, nullptr};
}

QStringList namesOf(const std::vector<Camera>& cameras)
{
    QStringList names;
    for (const Camera& camera : cameras)
        names.append(camera.name);
    return names;
}

TEST(CameraListings, OneCameraInSeveralServicesIsListedOnce)
{
    const auto cameras = joinListings({
        listed("Webcam (V4L2)", CameraService::PipeWire, "/dev/video0"),
        listed("Virtual", CameraService::PipeWire),
        listed("Webcam: Webcam", CameraService::V4l2, "/dev/video0"),
        listed("Front", CameraService::Libcamera),
        listed("Front", CameraService::PipeWire),
    });
    EXPECT_EQ(namesOf(cameras),
              QStringList({QStringLiteral("Webcam: Webcam"), QStringLiteral("Virtual"), QStringLiteral("Front")}));
    ASSERT_EQ(cameras[0].ways.size(), 2U);
    EXPECT_EQ(cameras[0].ways[0].service, CameraService::V4l2);
    EXPECT_EQ(cameras[2].ways[0].service, CameraService::PipeWire);
}

TEST(CameraListings, TwoCamerasOfOneMakeStayTwo)
{
    const auto sameService = joinListings(
        {listed("Cam", CameraService::V4l2, "/dev/video0"), listed("Cam", CameraService::V4l2, "/dev/video2")});
    EXPECT_EQ(sameService.size(), 2U);
    const auto twoServices = joinListings(
        {listed("Cam", CameraService::V4l2, "/dev/video0"), listed("Cam", CameraService::V4l2, "/dev/video2"),
         listed("Cam", CameraService::PipeWire, "/dev/video2"), listed("Cam", CameraService::PipeWire, "/dev/video0")});
    ASSERT_EQ(twoServices.size(), 2U);
    EXPECT_EQ(twoServices[0].ways[1].place, "/dev/video0");
    EXPECT_EQ(joinListings({listed("Cam", CameraService::V4l2), listed("Cam", CameraService::V4l2),
                            listed("Cam", CameraService::PipeWire), listed("Cam", CameraService::PipeWire)})
                  .size(),
              2U);
}

TEST(CameraCaps, ModesAreWhatCanBeReadInOrdinaryMemory)
{
    ASSERT_EQ(initGStreamer(), QString());
    const GstPtr<GstCaps> offered(gst_caps_from_string(
        "video/x-raw, format={YUY2, UYVY}, width=640, height=480, framerate={10/1, 30/1, 60/1};"
        "image/jpeg, width=[160, 1920, 32], height={120, 1080}, framerate=[1/1, 25/1];"
        "video/x-raw(memory:DMABuf), format=NV12, width=4096, height=2160;"
        "video/x-bayer, format=rggb, width=2000, height=1500; video/x-h264, width=1280, height=720"));
    ASSERT_NE(offered, nullptr);
    const GstCameraCaps caps(offered.get());
    ASSERT_EQ(caps.modes().size(), 4U);
    EXPECT_EQ(caps.modes()[0].rate, 30);
    EXPECT_EQ(caps.modes()[2].rate, 25);
    EXPECT_EQ(caps.modes()[3].largest, QSize(1920, 1080));
    const auto choice = chooseCameraMode(caps.modes(), 5);
    ASSERT_TRUE(choice);
    EXPECT_FALSE(caps.needsConversion(*choice)) << "what libyuv reads comes before what has to be converted";
    const GstPtr<GstCaps> expected(
        gst_caps_from_string("video/x-raw, format=YUY2, width=640, height=480, framerate=30/1"));
    EXPECT_TRUE(gst_caps_is_equal(caps.capsOf(*choice).get(), expected.get()));
    EXPECT_TRUE(GstCameraCaps(nullptr).modes().empty());
}

class RealCamera : public testing::Test {
protected:
    RealCamera()
    {
        state.i_Camera_CRP = 5;
        QObject::connect(&camera, &CameraDelegate::pictureTaken, &camera, [this] { ++taken; });
        QObject::connect(&camera, &CameraDelegate::cameraPresenceChanged, &camera,
                         [this](bool present) { presence.push_back(present); });
    }
    bool isListed()
    {
        return eventually([this] { return camera.enumCameras().contains(kName); });
    }
    bool picturesArrive()
    {
        const int before = taken;
        return eventually([&] { return taken > before + 2; });
    }

    CameraState state;
    std::unique_ptr<CameraSource> source = createGstCameraSource();
    CameraDelegate camera{*source, state};
    int taken = 0;
    std::vector<bool> presence;
};

TEST_F(RealCamera, TestBarsComeThroughInTheirColours)
{
    PipeWireCameraWorld world;
    world.plugIn(kName);
    ASSERT_TRUE(isListed());
    ASSERT_TRUE(camera.startCamera(kName)) << qPrintable(camera.trouble());
    ASSERT_TRUE(picturesArrive());
    ASSERT_EQ(state.imgDeviceCapture.size(), QSize(640, 480));
    EXPECT_EQ(state.size_Camera, (CGSize{640, 480}));
    // Seven bars: grey, yellow, cyan, green, magenta, red, blue.
    const auto bar = [this](int index) {
        return QColor(state.imgDeviceCapture.pixel(640 * (2 * index + 1) / 14, 100));
    };
    EXPECT_LT(bar(0).saturation(), 12);
    EXPECT_GT(bar(0).value(), 150);
    EXPECT_NEAR(bar(1).hue(), 60, 8);
    EXPECT_NEAR(bar(2).hue(), 180, 8);
    EXPECT_NEAR(bar(3).hue(), 120, 8);
    EXPECT_NEAR(bar(5).hue() % 352, 0, 8);
    EXPECT_NEAR(bar(6).hue(), 240, 8);
    EXPECT_TRUE(camera.stopCamera());
}

} // namespace
} // namespace lumavex
