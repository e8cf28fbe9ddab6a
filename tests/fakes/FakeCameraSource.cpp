// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/fakes/FakeCameraSource.h"

#include "tests/fakes/FakeCameraFrame.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

#include <pthread.h>

namespace lumavex {

/// Delivers frames on its own thread until it is destroyed.
class FakeCameraSource::CaptureQueue {
public:
    struct Job {
        FrameHandler handler;
        FakeCamera camera;
        CameraChoice choice;
        std::uint64_t source = 0;
    };

    explicit CaptureQueue(Job job) : job_(std::move(job)), thread_([this] { run(); }) {}
    ~CaptureQueue()
    {
        {
            const std::lock_guard lock(mutex_);
            ending_ = true;
        }
        changed_.notify_all();
        thread_.join();
    }
    CaptureQueue(const CaptureQueue&) = delete;
    CaptureQueue& operator=(const CaptureQueue&) = delete;

    void send(const QImage& picture)
    {
        std::unique_lock lock(mutex_);
        toSend_ = picture;
        changed_.notify_all();
        changed_.wait(lock, [this] { return toSend_.isNull(); });
    }

private:
    void run()
    {
        pthread_setname_np(pthread_self(), "captureQueue");
        QImage own = job_.camera.picture;
        const QSize size = job_.camera.trueSize.value_or(job_.choice.size);
        if (own.isNull()) {
            own = QImage(size, QImage::Format_RGB32);
            own.fill(qRgb(128, 128, 128));
        }
        const FakeCameraFrame regular(own.scaled(size), job_.camera.pixels);
        std::unique_lock lock(mutex_);
        const auto due = [this] { return ending_ || !toSend_.isNull(); };
        for (;;) {
            if (job_.camera.interval)
                changed_.wait_for(lock, *job_.camera.interval, due);
            else
                changed_.wait(lock, due);
            if (ending_)
                return;
            const QImage sent = toSend_;
            lock.unlock();
            hand(sent.isNull() ? regular : FakeCameraFrame(sent, job_.camera.pixels));
            lock.lock();
            toSend_ = {};
            changed_.notify_all();
        }
    }

    void hand(const FakeCameraFrame& packed)
    {
        CameraFrame frame = packed.frame();
        frame.picture = job_.choice.picture;
        frame.source = job_.source;
        if (job_.handler)
            job_.handler(frame);
    }

    const Job job_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool ending_ = false;
    QImage toSend_; ///< null: nothing
    std::thread thread_;
};

FakeCameraSource::FakeCameraSource() = default;

FakeCameraSource::~FakeCameraSource() = default;

QStringList FakeCameraSource::names()
{
    QStringList result;
    for (const FakeCamera& camera : cameras_)
        result.append(camera.name);
    return result;
}

std::vector<FakeCamera>::iterator FakeCameraSource::find(const QString& name)
{
    return std::find_if(cameras_.begin(), cameras_.end(),
                        [&name](const FakeCamera& each) { return each.name == name; });
}

QString FakeCameraSource::open(const CameraRequest& request)
{
    stop();
    ++source_;
    opened_ = request;
    const QString trouble = start();
    if (!trouble.isEmpty())
        opened_.reset();
    return trouble;
}

QString FakeCameraSource::beginOpening(const CameraRequest& request, OutcomeHandler outcome)
{
    const QString trouble = open(request);
    const auto camera = find(request.name);
    const bool isRefusal = camera != cameras_.end() && !camera->refusal.isEmpty();
    if (!trouble.isEmpty() && !isRefusal)
        return trouble;
    opened_ = request; // until `stop` clears it
    QMetaObject::invokeMethod(
        &outcomes_,
        [this, trouble, opening = source_, outcome = std::move(outcome)] {
            if (opening != source_ || !opened_)
                return;
            if (!trouble.isEmpty())
                opened_.reset();
            outcome(trouble);
        },
        Qt::QueuedConnection);
    return {};
}

QString FakeCameraSource::start()
{
    const auto camera = find(opened_->name);
    if (camera == cameras_.end())
        return QStringLiteral("There is no camera named %1.").arg(opened_->name);
    if (!camera->refusal.isEmpty())
        return camera->refusal;
    std::vector<CameraMode> modes;
    for (const QSize& size : camera->sizes)
        modes.push_back({.smallest = size, .largest = size});
    const auto choice = chooseCameraMode(modes, opened_->preset);
    if (!choice)
        return QStringLiteral("The camera %1 does not offer this resolution.").arg(opened_->name);
    queue_ = std::make_unique<CaptureQueue>(CaptureQueue::Job{frameHandler_, *camera, *choice, source_});
    return {};
}

void FakeCameraSource::stop()
{
    queue_.reset();
    opened_.reset();
}

void FakeCameraSource::add(const FakeCamera& camera)
{
    cameras_.push_back(camera);
    if (opened_ && !queue_ && opened_->name == camera.name && start().isEmpty() && presenceHandler_)
        presenceHandler_(true);
}

void FakeCameraSource::remove(const QString& name)
{
    const auto camera = find(name);
    if (camera == cameras_.end())
        return;
    cameras_.erase(camera);
    if (!queue_ || opened_->name != name)
        return;
    queue_.reset();
    if (presenceHandler_)
        presenceHandler_(false);
    if (opened_ && start().isEmpty() && presenceHandler_)
        presenceHandler_(true);
}

void FakeCameraSource::send(const QImage& picture)
{
    Q_ASSERT(queue_);
    queue_->send(picture);
}

} // namespace lumavex
