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

/// The services cameras are listed by, the preferred one first: the kernel's own interface offers every size and rate a
/// camera has, PipeWire shares it with other programs, libcamera drives what neither of them can.
enum class CameraService { V4l2, PipeWire, Libcamera, Other };

/// A camera as one service lists it.
struct ListedCamera {
    QString name;
    CameraService service = CameraService::Other;
    std::string place; ///< the same for one physical camera in every service that knows it; empty: not known
    std::string key;   ///< tells it from all others while it is present
    std::shared_ptr<GstDevice> device;
    std::uint64_t serial = 0; ///< PipeWire's, which grows with every object; else 0
};

/// One physical camera.
struct Camera {
    QString name;                   ///< by the preferred service
    std::vector<ListedCamera> ways; ///< the services it can be opened by, the preferred one first; never empty
};

/// Joins what several services say of the same cameras: those at one place, and, where a service does not tell the
/// place, a camera with the name of one of another service. Each camera stands where it is listed first.
std::vector<Camera> joinListings(const std::vector<ListedCamera>& listed);

/// The cameras present. A thread of its own watches them, since asking the services may take long, as may starting
/// GStreamer, which it does if nobody has.
class GstCameraList {
public:
    /// Called on the watching thread whenever the list has changed.
    using ChangeHandler = std::function<void()>;

    explicit GstCameraList(ChangeHandler changed);
    /// The handler is not called any more when this returns.
    ~GstCameraList();
    GstCameraList(const GstCameraList&) = delete;
    GstCameraList& operator=(const GstCameraList&) = delete;

    /// In the system's order; none when GStreamer cannot be used. The first call may wait up to 2 s for the services to
    /// answer. Any thread.
    std::vector<Camera> cameras();

private:
    struct Shared;
    static void watch(const std::shared_ptr<Shared>& shared);
    static void watchServices(Shared& shared);

    std::shared_ptr<Shared> shared_;
};

} // namespace lumavex
