// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/gstreamer/GstPtr.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace lumavex {

/// Services that list cameras, in order of preference: the kernel's own interface offers every size and rate of a
/// camera, PipeWire shares the camera with other programs, libcamera drives cameras that neither of them can.
enum class CameraService { V4l2, PipeWire, Libcamera, Other };

/// A camera as one service lists it.
struct ListedCamera {
    QString name;
    CameraService service = CameraService::Other;
    std::string place; ///< the same for one physical camera in every service that knows it; empty: unknown
    std::string key;   ///< distinguishes it from all others while it is present
    std::shared_ptr<GstDevice> device;
    std::uint64_t serial = 0; ///< PipeWire's, which increases with every object; else 0
};

/// One physical camera.
struct Camera {
    QString name;                   ///< name in the preferred service
    std::vector<ListedCamera> ways; ///< the services that can open it, the preferred one first; never empty
};

/// Joins the listings of several services: those with the same place, and, when a service does not report the place,
/// those of different services with the same name. Each camera keeps the position of its first listing.
std::vector<Camera> joinListings(const std::vector<ListedCamera>& listed);

/// The cameras present. Watches them on its own thread, since asking the services may take long, and so may starting
/// GStreamer, which it does when necessary.
class GstCameraList {
public:
    /// Called on the watching thread whenever the list has changed.
    using ChangeHandler = std::function<void()>;

    explicit GstCameraList(ChangeHandler changed);
    /// The handler is not called any more when this returns.
    ~GstCameraList();
    GstCameraList(const GstCameraList&) = delete;
    GstCameraList& operator=(const GstCameraList&) = delete;

    /// In the system's order; empty when GStreamer cannot be used. The first call may wait up to 2 s for the services
    /// to answer. Any thread.
    std::vector<Camera> cameras();

private:
    struct Shared;
    static void watch(const std::shared_ptr<Shared>& shared);
    static void watchServices(Shared& shared);

    std::shared_ptr<Shared> shared_;
};

} // namespace lumavex
