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

/// Properties of a fake camera.
struct FakeCamera {
    QString name;
    std::vector<QSize> sizes = {{320, 240}, {640, 480}, {1280, 720}};
    CameraPixels pixels = CameraPixels::Bgrx;
    QString refusal = {};               ///< reason why it cannot be opened; empty: it can
    std::optional<QSize> trueSize = {}; ///< size of its frames, whatever it announced
    QImage picture = {};                ///< scaled to its size; null: a grey picture
    /// Time between frames; std::nullopt: it sends only the pictures passed to `send`.
    std::optional<std::chrono::milliseconds> interval = std::chrono::milliseconds(10);
};

/// Cameras set by the test; a separate thread delivers their frames. Main thread.
class FakeCameraSource final : public CameraSource {
public:
    FakeCameraSource();
    ~FakeCameraSource() override;

    void beginListing() override {}
    QString trouble() override { return noCameras; }
    QStringList names() override;
    QString open(const CameraRequest& request) override;
    /// The outcome reports a camera's refusal; other errors are returned at once.
    QString beginOpening(const CameraRequest& request, OutcomeHandler outcome) override;
    void stop() override;
    std::uint64_t currentSource() const override { return source_; }
    void setFrameHandler(FrameHandler handler) override { frameHandler_ = std::move(handler); }
    void setPresenceHandler(PresenceHandler handler) override { presenceHandler_ = std::move(handler); }

    /// Plugs in a camera; one that has stopped running under this name is resumed.
    void add(const FakeCamera& camera);
    /// Unplugs the first camera of that name.
    void remove(const QString& name);
    /// Sends one unscaled picture; returns when it has been delivered. A camera must be running.
    void send(const QImage& picture);
    bool isRunning() const { return queue_ != nullptr; }

    QString noCameras; ///< reason why no camera is possible

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
    QObject outcomes_;                    ///< destroying it drops pending outcomes
};

} // namespace lumavex
