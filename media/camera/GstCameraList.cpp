// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/camera/GstCameraList.h"

#include "media/camera/GstCameraCaps.h"
#include "media/gstreamer/GstInit.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>
#include <utility>

#include <pthread.h>

namespace lumavex {
namespace {

constexpr std::chrono::seconds kFirstListing{2};
constexpr std::chrono::seconds kFarewell{2};

struct UnrefObject {
    void operator()(gpointer object) const { gst_object_unref(object); }
};

std::string property(const GstStructure* properties, std::initializer_list<const char*> names)
{
    for (const char* name : names) {
        const GValue* value = properties ? gst_structure_get_value(properties, name) : nullptr;
        if (value && G_VALUE_HOLDS_STRING(value) && g_value_get_string(value))
            return g_value_get_string(value);
        if (value && G_VALUE_HOLDS_UINT64(value))
            return std::to_string(g_value_get_uint64(value));
        if (value && G_VALUE_HOLDS_UINT(value))
            return std::to_string(g_value_get_uint(value));
    }
    return {};
}

CameraService serviceOf(const std::string& type)
{
    if (type == "GstV4l2Device")
        return CameraService::V4l2;
    if (type == "GstPipeWireDevice")
        return CameraService::PipeWire;
    return type == "GstLibcameraDevice" ? CameraService::Libcamera : CameraService::Other;
}

ListedCamera describe(std::shared_ptr<GstDevice> device)
{
    ListedCamera camera;
    const std::unique_ptr<gchar, decltype(&g_free)> name(gst_device_get_display_name(device.get()), g_free);
    const std::unique_ptr<GstStructure, decltype(&gst_structure_free)> properties(
        gst_device_get_properties(device.get()), gst_structure_free);
    const std::string type = G_OBJECT_TYPE_NAME(device.get());
    camera.name = QString::fromUtf8(name.get());
    camera.service = serviceOf(type);
    camera.place = camera.service == CameraService::Libcamera
                       ? std::string(name.get())
                       : property(properties.get(), {"device.path", "api.v4l2.path", "api.libcamera.path"});
    const std::string serial = property(properties.get(), {"object.serial"});
    std::from_chars(serial.data(), serial.data() + serial.size(), camera.serial);
    std::string id = property(properties.get(), {"object.serial", "object.id", "device.path"});
    if (id.empty())
        id = std::to_string(reinterpret_cast<std::uintptr_t>(device.get()));
    camera.key = type + ' ' + id;
    camera.device = std::move(device);
    return camera;
}

/// Counts the changes that the services report.
class Reports {
public:
    std::uint64_t count()
    {
        const std::lock_guard lock(mutex_);
        return count_;
    }
    void add()
    {
        const std::lock_guard lock(mutex_);
        ++count_;
        more_.notify_all();
    }
    /// Returns the count as soon as it differs from `known`.
    std::uint64_t waitForMore(std::uint64_t known)
    {
        std::unique_lock lock(mutex_);
        more_.wait(lock, [&] { return count_ != known; });
        return count_;
    }

private:
    std::mutex mutex_;
    std::condition_variable more_;
    std::uint64_t count_ = 0;
};

/// Lives as long as the services' threads, which end with the process.
Reports& reports()
{
    static auto* const reports = new Reports;
    return *reports;
}

GstBusSyncReply report(GstBus*, GstMessage* message, gpointer)
{
    gst_message_unref(message);
    reports().add();
    return GST_BUS_DROP;
}

GstDeviceMonitor* makeMonitor()
{
    GstDeviceMonitor* monitor = gst_device_monitor_new();
    gst_device_monitor_add_filter(monitor, "Video/Source", nullptr);
    const GstPtr<GstBus> bus(gst_device_monitor_get_bus(monitor));
    gst_bus_set_sync_handler(bus.get(), report, nullptr, nullptr);
    gst_device_monitor_start(monitor);
    return monitor;
}

/// The only monitor of all lists, because a provider reports changes to only one of several monitors: with GStreamer
/// 1.22 to the last one, with 1.26 not to that one. It is never stopped: PipeWire's provider (0.3.65) frees its nodes a
/// second time when the last monitor stops it.
GstDeviceMonitor* theMonitor()
{
    static GstDeviceMonitor* const monitor = makeMonitor();
    return monitor;
}

bool isReadable(GstDevice* device)
{
    const GstPtr<GstCaps> caps(gst_device_get_caps(device));
    return !GstCameraCaps(caps.get()).modes().empty();
}

std::vector<Camera> listing(GstDeviceMonitor* monitor)
{
    std::vector<ListedCamera> listed;
    GList* devices = gst_device_monitor_get_devices(monitor);
    for (GList* each = devices; each; each = each->next) {
        std::shared_ptr<GstDevice> device(GST_DEVICE(each->data), UnrefObject{});
        if (isReadable(device.get()))
            listed.push_back(describe(std::move(device)));
    }
    g_list_free(devices);
    // PipeWire's provider lists the latest camera first from 1.4 on.
    const auto isPipeWires = [](const ListedCamera& camera) { return camera.service == CameraService::PipeWire; };
    const auto first = std::find_if(listed.begin(), listed.end(), isPipeWires);
    std::stable_sort(first, std::find_if_not(first, listed.end(), isPipeWires),
                     [](const ListedCamera& a, const ListedCamera& b) { return a.serial < b.serial; });
    return joinListings(listed);
}

bool areSame(const Camera& known, const ListedCamera& other)
{
    const auto sees = [&](const ListedCamera& way) {
        if (way.service == other.service)
            return false;
        return way.place.empty() || other.place.empty() ? way.name == other.name : way.place == other.place;
    };
    const bool listedByService = std::any_of(known.ways.begin(), known.ways.end(),
                                             [&](const ListedCamera& way) { return way.service == other.service; });
    return !listedByService && std::any_of(known.ways.begin(), known.ways.end(), sees);
}

} // namespace

std::vector<Camera> joinListings(const std::vector<ListedCamera>& listed)
{
    std::vector<Camera> cameras;
    for (const ListedCamera& each : listed) {
        const auto same =
            std::find_if(cameras.begin(), cameras.end(), [&](const Camera& camera) { return areSame(camera, each); });
        if (same == cameras.end())
            cameras.push_back({each.name, {each}});
        else
            same->ways.push_back(each);
    }
    for (Camera& camera : cameras) {
        std::stable_sort(camera.ways.begin(), camera.ways.end(),
                         [](const ListedCamera& a, const ListedCamera& b) { return a.service < b.service; });
        camera.name = camera.ways.front().name;
    }
    return cameras;
}

struct GstCameraList::Shared {
    std::mutex mutex;
    std::condition_variable changed;
    ChangeHandler handler; ///< not called any more once `ending` is set
    std::vector<Camera> cameras;
    bool listed = false;
    bool ending = false;
    bool ended = false;
};

GstCameraList::GstCameraList(ChangeHandler changed) : shared_(std::make_shared<Shared>())
{
    shared_->handler = std::move(changed);
    std::thread([shared = shared_] { watch(shared); }).detach();
}

GstCameraList::~GstCameraList()
{
    std::unique_lock lock(shared_->mutex);
    shared_->ending = true;
    reports().add(); // wakes the watching thread
    // A service that hangs must not block this thread: the watching thread then keeps what it needs.
    shared_->changed.wait_for(lock, kFarewell, [this] { return shared_->ended; });
}

std::vector<Camera> GstCameraList::cameras()
{
    std::unique_lock lock(shared_->mutex);
    shared_->changed.wait_for(lock, kFirstListing, [this] { return shared_->listed; });
    return shared_->cameras;
}

void GstCameraList::watch(const std::shared_ptr<Shared>& shared)
{
    pthread_setname_np(pthread_self(), "cameraList");
    if (initGStreamer().isEmpty())
        watchServices(*shared);
    const std::lock_guard lock(shared->mutex);
    shared->listed = true;
    shared->ended = true;
    shared->changed.notify_all();
}

void GstCameraList::watchServices(Shared& shared)
{
    GstDeviceMonitor* const monitor = theMonitor();
    std::uint64_t known = reports().count(); // before listing, so that no change is missed
    for (;;) {
        std::vector<Camera> now = listing(monitor);
        {
            const std::lock_guard lock(shared.mutex);
            if (shared.ending)
                break;
            shared.cameras = std::move(now);
            shared.listed = true;
            shared.handler();
            shared.changed.notify_all();
        }
        known = reports().waitForMore(known);
    }
}

} // namespace lumavex
