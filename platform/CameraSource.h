// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Geometry.h"

#include <QImage>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace lumavex {

/// What a camera is asked for. `preset` is the resolution code 0 to 7; Low, Medium and High (0 to 2) are the camera's
/// sizes nearest to 320x240, 640x480 and 1280x720.
struct CameraRequest {
    QString name;
    std::int64_t preset = 0;
};

enum class CameraPixels { Mjpeg, Yuy2, Nv12, I420, Bgrx };

/// One frame as the camera sent it. The memory is valid during the call that hands it over, no longer.
struct CameraFrame {
    CameraPixels pixels = CameraPixels::Bgrx;
    int width = 0; ///< of the picture wanted (the preset's size)
    int height = 0;
    const std::uint8_t* planes[3] = {};
    int strides[3] = {};
    std::size_t bytes = 0;    ///< of planes[0], for Mjpeg
    bool fullRange = false;   ///< of the YUV kinds
    std::uint64_t source = 0; ///< which opening of a camera it belongs to
};

/// Opens cameras by name. Main thread, except that frames arrive one at a time on the serial queue "captureQueue".
class CameraSource {
public:
    using FrameHandler = std::function<void(const CameraFrame&)>;
    /// The running camera vanished (`present` false) or came back under its name (true). Main thread.
    using PresenceHandler = std::function<void(bool present)>;

    virtual ~CameraSource() = default;

    /// Names of the cameras present, in the order the system lists them.
    virtual QStringList names() = 0;
    /// Opens the camera and starts it; answers within 3 s. Empty on success, else why not, in the user's words.
    /// An open camera is closed first.
    virtual QString open(const CameraRequest& request) = 0;
    /// Stops the frames; none is in flight when it returns. Nothing happens when no camera is open.
    virtual void stop() = 0;
    /// The number that frames of the latest opening carry as their `source`.
    virtual std::uint64_t currentSource() const = 0;
    virtual void setFrameHandler(FrameHandler handler) = 0;
    virtual void setPresenceHandler(PresenceHandler handler) = 0;
};

} // namespace lumavex
