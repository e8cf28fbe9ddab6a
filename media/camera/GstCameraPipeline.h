// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/camera/GstCameraCaps.h"
#include "media/gstreamer/GstPtr.h"
#include "platform/CameraSource.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>

namespace lumavex {

/// One opening of one camera. Everything that may take long happens on its thread "captureQueue", which also passes the
/// frames to the handler:
///
///     camera ! capsfilter (the mode) [ ! videoconvert ! capsfilter (BGRx) ] ! appsink (newest frame only)
///                                                                               |
///                                                                  captureQueue: pull, map, frame handler
///
/// It ends by itself when the camera fails or sends nothing for too long.
class GstCameraPipeline : public std::enable_shared_from_this<GstCameraPipeline> {
public:
    struct Job {
        std::shared_ptr<GstDevice> device;
        QString name; ///< for messages
        GstPtr<GstCaps> caps;
        bool convert = false; ///< the pictures need a conversion
        QSize picture;        ///< size of the pictures to make of the frames
        std::uint64_t source = 0;
        std::shared_ptr<GstCameraPipeline> before; ///< must release its camera first; may be null
        CameraSource::FrameHandler frame;          ///< may be null
        std::function<void()> started;             ///< the first frame has arrived; on the capture queue
        std::function<void()> ended; ///< the camera has failed or sends nothing; on the capture queue, after all others
    };
    using Time = std::chrono::steady_clock::time_point;

    /// Begins to open the camera; returns at once.
    static std::shared_ptr<GstCameraPipeline> start(Job job);

    /// Waits for the first frame, a failure or the deadline. Empty when the camera runs, even if it has not sent
    /// anything yet; else the reason as text for the user.
    QString waitUntilRunning(Time deadline);
    /// True while the camera neither runs nor has failed: the system does not answer.
    bool isOpening();
    /// No handler runs after this returns. The camera is released soon.
    void abandon();
    /// Abandons the camera and waits until it is released, at most 2 s.
    void stop();

private:
    explicit GstCameraPipeline(Job job) : job_(std::move(job)) {}
    enum class Phase { Opening, Playing, Delivering, Failed };

    void run();
    bool build();
    bool play();
    void pullFrames();
    void deliver(GstSample* sample);
    void pass(CameraFrame frame);
    bool isAbandoned();
    bool hasFailed();
    void fail(const QString& reason);
    QString reasonOf(GstMessage* message) const;
    QString cannotStart(const QString& why) const;

    Job job_;
    GstPtr<GstElement> pipeline_; ///< used on the capture queue only
    GstElement* sink_ = nullptr;  ///< belongs to the pipeline

    std::mutex handling_; ///< held while a handler runs
    bool abandoned_ = false;

    std::mutex mutex_; ///< guards the members below
    std::condition_variable changed_;
    Phase phase_ = Phase::Opening;
    QString trouble_;
    bool finished_ = false; ///< the camera is released
};

} // namespace lumavex
