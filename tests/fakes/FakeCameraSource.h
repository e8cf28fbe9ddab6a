// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/CameraModes.h"
#include "platform/CameraSource.h"

#include <QImage>
#include <QObject>

#include <chrono>
#include <memory>
#include <optional>
#include <vector>

namespace lumavex {

/// What a camera of the fake is like.
struct FakeCamera {
    QString name;
    std::vector<QSize> sizes = {{320, 240}, {640, 480}, {1280, 720}};
    CameraPixels pixels = CameraPixels::Bgrx;
    QString refusal = {};               ///< why it cannot be opened; empty: it can
    std::optional<QSize> trueSize = {}; ///< what it sends, whatever it promised
    QImage picture = {};                ///< scaled to its size; null: a grey one
    /// From frame to frame; none: it sends what `send` is given, and nothing else.
    std::optional<std::chrono::milliseconds> interval = std::chrono::milliseconds(10);
};

/// Cameras as the test wants them, whose frames come on a thread of their own. Main thread.
class FakeCameraSource final : public CameraSource {
public:
    FakeCameraSource();
    ~FakeCameraSource() override;

    void beginListing() override {}
    QString trouble() override { return noCameras; }
    QStringList names() override;
    QString open(const CameraRequest& request) override;
    /// A camera's refusal is the outcome; what else is wrong is told at once.
    QString beginOpening(const CameraRequest& request, OutcomeHandler outcome) override;
    void stop() override;
    std::uint64_t currentSource() const override { return source_; }
    void setFrameHandler(FrameHandler handler) override { frameHandler_ = std::move(handler); }
    void setPresenceHandler(PresenceHandler handler) override { presenceHandler_ = std::move(handler); }

    /// A camera is plugged in; one that runs no more under this name is taken up again.
    void add(const FakeCamera& camera);
    /// The first camera of that name is unplugged.
    void remove(const QString& name);
    /// Sends one picture as it is, scaled by nobody; returns when it has been handed over. A camera must be running.
    void send(const QImage& picture);
    bool isRunning() const { return queue_ != nullptr; }

    QString noCameras; ///< why there can be none

private:
    class CaptureQueue;
    QString start();
    std::vector<FakeCamera>::iterator find(const QString& name);

    std::vector<FakeCamera> cameras_;
    FrameHandler frameHandler_;
    PresenceHandler presenceHandler_;
    std::uint64_t source_ = 0;
    std::optional<CameraRequest> opened_;
    std::unique_ptr<CaptureQueue> queue_; ///< null: no camera runs
    QObject outcomes_;                    ///< what is still to be told ends with it
};

} // namespace lumavex
