// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/CameraFrame.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <functional>

namespace lumavex {

/// A request to open a camera. `preset` is the resolution code 0 to 7 (base/CameraModes.h).
struct CameraRequest {
    QString name;
    std::int64_t preset = 0;
    friend bool operator==(const CameraRequest&, const CameraRequest&) = default;
};

/// Opens cameras by name. Main thread, except that frames arrive one at a time on the serial queue "captureQueue".
class CameraSource {
public:
    /// Called on the capture queue. It must not call the camera source.
    using FrameHandler = std::function<void(const CameraFrame&)>;
    /// The running camera vanished or sends nothing (`present` false), or delivers frames again under its name (true).
    /// The two alternate, beginning with false; openings and `stop` report nothing. Main thread.
    using PresenceHandler = std::function<void(bool present)>;

    /// Outcome of an opening: empty when the camera runs, else the reason as text for the user. Main thread.
    using OutcomeHandler = std::function<void(const QString& trouble)>;

    virtual ~CameraSource() = default;

    /// Starts to look for cameras, so that the first call of `names` or `open` waits less, or not at all. Does not
    /// wait. Calling it is optional.
    virtual void beginListing() = 0;
    /// Reason why no camera can be used at all, as text for the user; empty when cameras can be used. Waits like
    /// `names`.
    virtual QString trouble() = 0;
    /// Names of the cameras present, in the system's order. Two cameras may have the same name.
    virtual QStringList names() = 0;
    /// Opens the first camera of that name and starts it; returns within 3 s. Empty on success, else the reason as text
    /// for the user. An open camera is closed first, whatever the outcome.
    virtual QString open(const CameraRequest& request) = 0;
    /// Like open(), but waits neither for the camera nor for an open one to be released. Not empty: the reason why the
    /// opening certainly fails. Empty: the opening has begun, and the event loop calls `outcome`, which must not be
    /// null, once within 3 s, unless `open`, `beginOpening` or `stop` is called before. An event loop must run.
    virtual QString beginOpening(const CameraRequest& request, OutcomeHandler outcome) = 0;
    /// Stops the frames and releases the camera; no frame is in progress when this returns, and none follows. Does
    /// nothing when no camera is open.
    virtual void stop() = 0;
    /// The `source` of the latest opening's frames. Every call of `open` and `beginOpening` increments it by one before
    /// the first frame arrives; it begins with 0.
    virtual std::uint64_t currentSource() const = 0;
    /// Handlers apply to later openings. Null: no notification.
    virtual void setFrameHandler(FrameHandler handler) = 0;
    virtual void setPresenceHandler(PresenceHandler handler) = 0;
};

} // namespace lumavex
