// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/CameraFrame.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <functional>

namespace lumavex {

/// What a camera is asked for. `preset` is the resolution code 0 to 7 (base/CameraModes.h).
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
    /// The running camera vanished or fell silent (`present` false), or gives frames again under its name (true). The
    /// two alternate, beginning with false; nothing is reported by openings and `stop`. Main thread.
    using PresenceHandler = std::function<void(bool present)>;

    /// How an opening ended: empty when the camera runs, else why not, in the user's words. Main thread.
    using OutcomeHandler = std::function<void(const QString& trouble)>;

    virtual ~CameraSource() = default;

    /// Begins to look for cameras, so that the first call of `names` or `open` has less to wait for, if anything. Does
    /// not wait; who does not call it loses no more than that.
    virtual void beginListing() = 0;
    /// Why there can be no camera at all, in the user's words; empty when there can. Waits as `names` does.
    virtual QString trouble() = 0;
    /// Names of the cameras present, in the order the system lists them. Two cameras may have the same name.
    virtual QStringList names() = 0;
    /// Opens the first camera of that name and starts it; answers within 3 s. Empty on success, else why not, in the
    /// user's words. A camera that is open is closed first, whatever the outcome.
    virtual QString open(const CameraRequest& request) = 0;
    /// The same without a wait for the camera, or for one that is open to be given back. Not empty: why it is certain
    /// at once that it cannot be opened. Empty: it is under way, and the outcome, never null, is told once from the
    /// event loop within 3 s, unless `open`, `beginOpening` or `stop` is called before. An event loop must run.
    virtual QString beginOpening(const CameraRequest& request, OutcomeHandler outcome) = 0;
    /// Stops the frames and gives the camera back; none is in flight when it returns, and none follows. Nothing happens
    /// when no camera is open.
    virtual void stop() = 0;
    /// The number that frames of the latest opening carry as their `source`. Every call of `open` and `beginOpening`
    /// counts it up by one before the first frame arrives; it begins with 0.
    virtual std::uint64_t currentSource() const = 0;
    /// Handlers hold for the openings that follow. Null: nobody is told.
    virtual void setFrameHandler(FrameHandler handler) = 0;
    virtual void setPresenceHandler(PresenceHandler handler) = 0;
};

} // namespace lumavex
