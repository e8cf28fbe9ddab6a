// SPDX-License-Identifier: GPL-3.0-or-later
#include "camera/FrameConverter.h"
#include "media/camera/GstCameraPipeline.h"
#include "media/gstreamer/GstInit.h"

#include <QColor>

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

// A device whose element is described in the notation of gst-launch.
struct TestDevice {
    GstDevice parent;
    const char* description;
};
struct TestDeviceClass {
    GstDeviceClass parent;
};
G_DEFINE_TYPE(TestDevice, test_device, GST_TYPE_DEVICE)

static GstElement* createTestElement(GstDevice* device, const gchar*)
{
    return gst_parse_bin_from_description(reinterpret_cast<TestDevice*>(device)->description, TRUE, nullptr);
}
static void test_device_class_init(TestDeviceClass* type)
{
    type->parent.create_element = createTestElement;
}
static void test_device_init(TestDevice*) {}

namespace lumavex {
namespace {

using std::chrono::steady_clock;

const QRgb kColor = qRgb(0xC8, 0x64, 0x28);
constexpr const char* kConverted = "! video/x-raw, format=BGRx ! videoconvert";
const std::string kPicture = "videotestsrc is-live=true pattern=solid-color foreground-color=0xffc86428 ";

class GstCameraPipelineTest : public testing::Test {
protected:
    GstCameraPipelineTest() { EXPECT_EQ(initGStreamer(), QString()); }
    ~GstCameraPipelineTest() override
    {
        if (pipeline)
            pipeline->stop();
    }

    QString start(const std::string& source, const char* caps, bool needsConversion = false)
    {
        description_ = source;
        auto* device =
            static_cast<TestDevice*>(g_object_new(test_device_get_type(), "display-name", "Test camera", nullptr));
        device->description = description_.c_str();
        GstCameraPipeline::Job job;
        job.device = std::shared_ptr<GstDevice>(&device->parent, [](GstDevice* each) { gst_object_unref(each); });
        job.name = QStringLiteral("Test camera");
        job.caps.reset(gst_caps_from_string(caps));
        job.convert = needsConversion;
        job.source = 5;
        job.frame = [this](const CameraFrame& frame) {
            kind = frame.pixels;
            EXPECT_EQ(frame.source, 5U);
            const QImage picture = converter.convert(frame, std::nullopt);
            color = picture.pixel(picture.width() / 2, picture.height() / 2);
            size = picture.size();
            ++frames;
        };
        job.ended = [this] { ++ended; };
        pipeline = GstCameraPipeline::start(std::move(job));
        return pipeline->waitUntilRunning(steady_clock::now() + std::chrono::seconds(10));
    }
    static bool soon(const std::atomic<int>& count, int least)
    {
        const auto deadline = steady_clock::now() + std::chrono::seconds(10);
        while (count < least && steady_clock::now() < deadline)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        return count >= least;
    }

    std::shared_ptr<GstCameraPipeline> pipeline;
    FrameConverter converter;
    CameraPixels kind = CameraPixels::Bgrx;
    QRgb color = 0;
    QSize size;
    std::atomic<int> frames = 0;
    std::atomic<int> ended = 0;

private:
    std::string description_;
};

TEST_F(GstCameraPipelineTest, EveryKindOfPictureArrivesInItsColours)
{
    struct {
        const char* caps;
        const char* encoder;
        bool needsConversion;
        CameraPixels expected;
    } const kinds[] = {
        {"image/jpeg, width=321, height=99", "! video/x-raw, format=BGRx ! jpegenc", false, CameraPixels::Mjpeg},
        {"video/x-raw, format=YUY2, width=321, height=99", "", false, CameraPixels::Yuy2},
        {"video/x-raw, format=NV12, width=321, height=99", "", false, CameraPixels::Nv12},
        {"video/x-raw, format=I420, width=321, height=99, colorimetry=bt709", kConverted, false, CameraPixels::I420},
        {"video/x-raw, format=NV12, width=321, height=99, colorimetry=1:4:0:0", kConverted, false, CameraPixels::Nv12},
        {"video/x-raw, format=BGRx, width=321, height=99", "", false, CameraPixels::Bgrx},
        {"video/x-raw, format=UYVY, width=321, height=99", "", true, CameraPixels::Bgrx},
        {"video/x-raw, format=RGB, width=321, height=99", "", true, CameraPixels::Bgrx},
    };
    for (const auto& each : kinds) {
        frames = 0;
        ASSERT_EQ(start(kPicture + each.encoder, each.caps, each.needsConversion), QString()) << each.caps;
        ASSERT_TRUE(soon(frames, 2)) << each.caps;
        pipeline->stop();
        EXPECT_EQ(kind, each.expected) << each.caps;
        EXPECT_EQ(size, QSize(321, 99)) << each.caps;
        EXPECT_NEAR(qRed(color), qRed(kColor), 4) << each.caps;
        EXPECT_NEAR(qGreen(color), qGreen(kColor), 4) << each.caps;
        EXPECT_NEAR(qBlue(color), qBlue(kColor), 4) << each.caps;
    }
    EXPECT_EQ(ended, 0) << "stopped is not ended";
}

TEST_F(GstCameraPipelineTest, FailuresAreToldInTheUsersWords)
{
    const QString missing = start("filesrc location=/nonexistent/camera ! jpegdec", "video/x-raw, format=YUY2");
    EXPECT_TRUE(missing.contains(QStringLiteral("Test camera"))) << qPrintable(missing);
    EXPECT_TRUE(soon(ended, 1));
    const QString wrongCaps =
        start(kPicture + "! video/x-raw,format=NV12 ! identity", "video/x-raw, format=YUY2, width=64");
    EXPECT_FALSE(wrongCaps.isEmpty());
    EXPECT_EQ(frames, 0);
}

TEST_F(GstCameraPipelineTest, ACameraThatStopsByItselfEndsItOnce)
{
    ASSERT_EQ(start(kPicture + "num-buffers=6", "video/x-raw, format=NV12, width=64, height=64"), QString());
    EXPECT_TRUE(soon(ended, 1));
    pipeline->stop();
    EXPECT_EQ(ended, 1);
}

TEST_F(GstCameraPipelineTest, ACameraThatFallsSilentEndsIt)
{
    // The sleep is longer than a camera may stay silent.
    ASSERT_EQ(start(kPicture + "! identity error-after=-1 sleep-time=4000000", "video/x-raw, format=NV12, width=64"),
              QStringLiteral(""))
        << "slow to send its first picture is not silent";
    EXPECT_TRUE(soon(ended, 1));
}

} // namespace
} // namespace lumavex
