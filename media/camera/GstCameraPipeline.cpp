// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/camera/GstCameraPipeline.h"

#include "platform/PlatformText.h"

#include <gst/app/gstappsink.h>
#include <gst/video/video.h>

#include <array>
#include <cstring>
#include <string_view>
#include <thread>
#include <utility>

#include <pthread.h>

namespace lumavex {
namespace {

using std::chrono::steady_clock;

/// Delay until an abandoned camera is noticed.
constexpr GstClockTime kPull = 20 * GST_MSECOND;
/// Cameras in the dark slow down to a few frames a second, not below; some take long to send their first frame.
constexpr std::chrono::seconds kSilence{3};
constexpr std::chrono::seconds kFirstFrame{10};
constexpr std::chrono::seconds kGivenBack{2};

GstElement* makeFilter(const GstCaps* caps)
{
    GstElement* filter = gst_element_factory_make("capsfilter", nullptr);
    if (filter)
        g_object_set(filter, "caps", caps, nullptr);
    return filter;
}

GstElement* makeSink()
{
    GstElement* sink = gst_element_factory_make("appsink", nullptr);
    if (sink)
        g_object_set(sink, "drop", TRUE, "max-buffers", 1U, "sync", FALSE, "async", FALSE, nullptr);
    return sink;
}

GstElement* makeSource(GstDevice* device)
{
    GstElement* source = gst_device_create_element(device, nullptr);
    GstElementFactory* factory = source ? gst_element_get_factory(source) : nullptr;
    // pipewiresrc frees its buffers when the node disappears, so copy them.
    if (factory && std::string_view(GST_OBJECT_NAME(factory)) == "pipewiresrc")
        g_object_set(source, "do-timestamp", TRUE, "always-copy", TRUE, nullptr);
    return source;
}

CameraPixels pixelsOf(GstVideoFormat format)
{
    switch (format) {
    case GST_VIDEO_FORMAT_YUY2:
        return CameraPixels::Yuy2;
    case GST_VIDEO_FORMAT_NV12:
        return CameraPixels::Nv12;
    case GST_VIDEO_FORMAT_I420:
        return CameraPixels::I420;
    default:
        return CameraPixels::Bgrx;
    }
}

/// Maps a sample's memory for reading as long as this object lives.
class MappedSample {
public:
    explicit MappedSample(GstSample* sample) : buffer_(gst_sample_get_buffer(sample))
    {
        const GstCaps* caps = gst_sample_get_caps(sample);
        if (!buffer_ || !caps)
            return;
        const GstStructure* structure = gst_caps_get_structure(caps, 0);
        if (gst_structure_has_name(structure, "image/jpeg"))
            mapJpeg();
        else
            mapRaw(caps);
    }
    ~MappedSample()
    {
        if (jpeg_)
            gst_buffer_unmap(buffer_, &memory_);
        if (raw_)
            gst_video_frame_unmap(&video_);
    }
    MappedSample(const MappedSample&) = delete;
    MappedSample& operator=(const MappedSample&) = delete;

    /// Null when there is nothing to read: the buffer is smaller than its caps specify.
    const CameraFrame* frame() const { return jpeg_ || raw_ ? &frame_ : nullptr; }

private:
    void mapJpeg()
    {
        jpeg_ = gst_buffer_map(buffer_, &memory_, GST_MAP_READ);
        if (!jpeg_)
            return;
        frame_.pixels = CameraPixels::Mjpeg;
        frame_.planes[0] = memory_.data;
        frame_.bytes = memory_.size;
    }
    void mapRaw(const GstCaps* caps)
    {
        GstVideoInfo info;
        raw_ = gst_video_info_from_caps(&info, caps) && gst_video_frame_map(&video_, &info, buffer_, GST_MAP_READ);
        if (!raw_)
            return;
        frame_.pixels = pixelsOf(GST_VIDEO_INFO_FORMAT(&info));
        frame_.size = {GST_VIDEO_INFO_WIDTH(&info), GST_VIDEO_INFO_HEIGHT(&info)};
        for (std::size_t i = 0; i < std::min<std::size_t>(3, GST_VIDEO_FRAME_N_PLANES(&video_)); ++i) {
            frame_.planes[i] = static_cast<const std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&video_, i));
            frame_.strides[i] = GST_VIDEO_FRAME_PLANE_STRIDE(&video_, i);
        }
        const GstVideoColorimetry& colors = info.colorimetry;
        frame_.matrix = colors.matrix == GST_VIDEO_COLOR_MATRIX_BT709 ? CameraMatrix::Bt709 : CameraMatrix::Bt601;
        frame_.range = colors.range == GST_VIDEO_COLOR_RANGE_0_255 ? CameraRange::Full : CameraRange::Limited;
    }

    GstBuffer* buffer_;
    GstMapInfo memory_{};
    GstVideoFrame video_{};
    CameraFrame frame_;
    bool jpeg_ = false;
    bool raw_ = false;
};

} // namespace

std::shared_ptr<GstCameraPipeline> GstCameraPipeline::start(Job job)
{
    std::shared_ptr<GstCameraPipeline> made(new GstCameraPipeline(std::move(job)));
    // A state change that hangs blocks only this thread, so nobody joins it.
    std::thread([made] { made->run(); }).detach();
    return made;
}

QString GstCameraPipeline::waitUntilRunning(Time deadline)
{
    std::unique_lock lock(mutex_);
    changed_.wait_until(lock, deadline, [this] { return phase_ == Phase::Delivering || phase_ == Phase::Failed; });
    if (phase_ == Phase::Opening)
        return cannotStart(PlatformText::tr("it does not answer"));
    return trouble_;
}

bool GstCameraPipeline::isOpening()
{
    const std::lock_guard lock(mutex_);
    return phase_ == Phase::Opening;
}

void GstCameraPipeline::abandon()
{
    const std::lock_guard lock(handling_);
    abandoned_ = true;
}

void GstCameraPipeline::stop()
{
    abandon();
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, kGivenBack, [this] { return finished_; });
}

void GstCameraPipeline::run()
{
    pthread_setname_np(pthread_self(), "captureQueue");
    if (const auto before = std::exchange(job_.before, nullptr))
        before->stop();
    if (!isAbandoned() && build() && play())
        pullFrames();
    if (pipeline_)
        gst_element_set_state(pipeline_.get(), GST_STATE_NULL);
    pipeline_.reset();
    {
        const std::lock_guard lock(mutex_);
        finished_ = true;
        changed_.notify_all();
    }
    const std::lock_guard lock(handling_);
    if (!abandoned_ && job_.ended)
        job_.ended();
}

bool GstCameraPipeline::build()
{
    const GstPtr<GstCaps> bgrx(gst_caps_new_simple("video/x-raw", "format", G_TYPE_STRING, "BGRx", nullptr));
    std::vector<GstElement*> elements{makeSource(job_.device.get()), makeFilter(job_.caps.get())};
    if (job_.convert) {
        elements.push_back(gst_element_factory_make("videoconvert", nullptr));
        elements.push_back(makeFilter(bgrx.get()));
    }
    elements.push_back(makeSink());
    pipeline_.reset(gst_pipeline_new("camera"));
    bool linked = true;
    GstElement* previous = nullptr;
    for (GstElement* element : elements) {
        if (element)
            gst_bin_add(GST_BIN(pipeline_.get()), element);
        linked = linked && element && (!previous || gst_element_link(previous, element));
        previous = element;
    }
    sink_ = elements.back();
    if (!linked)
        fail(cannotStart(PlatformText::tr("a part of GStreamer is not installed")));
    return linked;
}

bool GstCameraPipeline::play()
{
    if (gst_element_set_state(pipeline_.get(), GST_STATE_PLAYING) == GST_STATE_CHANGE_FAILURE) {
        if (!hasFailed())
            fail(cannotStart(PlatformText::tr("it cannot be opened")));
        return false;
    }
    const std::lock_guard lock(mutex_);
    phase_ = Phase::Playing;
    return true;
}

void GstCameraPipeline::pullFrames()
{
    auto latest = steady_clock::now();
    bool delivering = false;
    while (!isAbandoned() && !hasFailed()) {
        const GstPtr<GstSample> sample(gst_app_sink_try_pull_sample(GST_APP_SINK(sink_), kPull));
        const auto now = steady_clock::now();
        if (!sample) {
            if (now - latest > (delivering ? kSilence : kFirstFrame))
                return fail(PlatformText::tr("The camera %1 sends no pictures.").arg(job_.name));
            continue;
        }
        latest = now;
        if (!std::exchange(delivering, true)) {
            {
                const std::lock_guard lock(mutex_);
                phase_ = Phase::Delivering;
                changed_.notify_all();
            }
            const std::lock_guard lock(handling_);
            if (!abandoned_ && job_.started)
                job_.started();
        }
        deliver(sample.get());
    }
}

void GstCameraPipeline::deliver(GstSample* sample)
{
    const MappedSample mapped(sample);
    if (const CameraFrame* frame = mapped.frame())
        pass(*frame);
}

void GstCameraPipeline::pass(CameraFrame frame)
{
    frame.picture = job_.picture;
    frame.source = job_.source;
    const std::lock_guard lock(handling_);
    if (!abandoned_ && job_.frame)
        job_.frame(frame);
}

bool GstCameraPipeline::isAbandoned()
{
    const std::lock_guard lock(handling_);
    return abandoned_;
}

/// Checks for a message that reports a failure of the camera, and stores its reason.
bool GstCameraPipeline::hasFailed()
{
    const GstPtr<GstBus> bus(gst_element_get_bus(pipeline_.get()));
    const GstPtr<GstMessage> message(
        gst_bus_pop_filtered(bus.get(), static_cast<GstMessageType>(GST_MESSAGE_ERROR | GST_MESSAGE_EOS)));
    if (message)
        fail(reasonOf(message.get()));
    return message != nullptr;
}

void GstCameraPipeline::fail(const QString& reason)
{
    const std::lock_guard lock(mutex_);
    phase_ = Phase::Failed;
    trouble_ = reason;
    changed_.notify_all();
}

QString GstCameraPipeline::reasonOf(GstMessage* message) const
{
    if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_EOS)
        return PlatformText::tr("The camera %1 has stopped.").arg(job_.name);
    GError* error = nullptr;
    gst_message_parse_error(message, &error, nullptr);
    const std::unique_ptr<GError, decltype(&g_error_free)> owned(error, g_error_free);
    if (g_error_matches(error, GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_BUSY))
        return PlatformText::tr("The camera %1 is in use by another program.").arg(job_.name);
    if (g_error_matches(error, GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_NOT_AUTHORIZED)
        || g_error_matches(error, GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_OPEN_READ_WRITE))
        return PlatformText::tr("You are not allowed to use the camera %1.").arg(job_.name);
    return cannotStart(QString::fromUtf8(error->message));
}

QString GstCameraPipeline::cannotStart(const QString& why) const
{
    return PlatformText::tr("The camera %1 could not be started: %2.").arg(job_.name, why);
}

} // namespace lumavex
