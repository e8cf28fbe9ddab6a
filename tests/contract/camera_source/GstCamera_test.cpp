// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/camera/GstCameraCaps.h"
#include "media/camera/GstCameraList.h"
#include "media/gstreamer/GstInit.h"

#include <QStringList>

#include <gtest/gtest.h>

namespace lumavex {
namespace {

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

} // namespace
} // namespace lumavex
