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

/// One opening of one camera. Everything that may take long happens on its thread "captureQueue", which also hands the
/// frames over:
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
        bool convert = false; ///< pictures of a kind that has to be converted first
        QSize picture;        ///< what is to be made of the frames
        std::uint64_t source = 0;
        std::shared_ptr<GstCameraPipeline> before; ///< has to give its camera back first; may be null
        CameraSource::FrameHandler frame;          ///< may be null
        std::function<void()> started;             ///< the first frame is here; on the capture queue
        std::function<void()> ended;               ///< it failed or fell silent; on the capture queue, last of all
    };
    using Time = std::chrono::steady_clock::time_point;

    /// Begins to open the camera; returns at once.
    static std::shared_ptr<GstCameraPipeline> start(Job job);

    /// Waits for the first frame, a failure or the time. Empty when the camera runs, if need be without having sent
    /// anything yet; else why not, in the user's words.
    QString waitUntilRunning(Time deadline);
    /// Neither running nor failed: the system does not answer.
    bool isOpening();
    /// No handler runs when this returns, nor later. The camera is given back soon.
    void abandon();
    /// Abandons it and waits until the camera is given back, at most 2 s.
    void stop();

private:
    explicit GstCameraPipeline(Job job) : job_(std::move(job)) {}
    enum class Phase { Opening, Playing, Delivering, Failed };

    void run();
    bool build();
    bool play();
    void pullFrames();
    void deliver(GstSample* sample);
    void hand(CameraFrame frame);
    bool isAbandoned();
    bool hasFailed();
    void fail(const QString& reason);
    QString reasonOf(GstMessage* message) const;
    QString cannotStart(const QString& why) const;

    Job job_;
    GstPtr<GstElement> pipeline_; ///< capture queue
    GstElement* sink_ = nullptr;  ///< belongs to the pipeline

    std::mutex handling_; ///< held while a handler runs
    bool abandoned_ = false;

    std::mutex mutex_; ///< guards what follows
    std::condition_variable changed_;
    Phase phase_ = Phase::Opening;
    QString trouble_;
    bool finished_ = false; ///< the camera is given back
};

} // namespace lumavex
