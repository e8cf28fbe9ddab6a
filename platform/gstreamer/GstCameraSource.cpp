// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/gstreamer/GstCameraSource.h"

#include "platform/gstreamer/GstCameraList.h"
#include "platform/gstreamer/GstCameraPipeline.h"
#include "platform/gstreamer/GstInit.h"

#include <QCoreApplication>
#include <QTimer>

#include <algorithm>
#include <optional>
#include <utility>

namespace lumavex {
namespace {

using std::chrono::steady_clock;

constexpr std::chrono::milliseconds kOpen{2900};
/// Another service is not worth trying in less time.
constexpr std::chrono::milliseconds kLeastOpen{300};
constexpr std::chrono::seconds kRetry{1};
/// An attempt to take a camera up again that has not been answered by then is given up for another.
constexpr std::chrono::seconds kAttempt{4};

class GstCameraSource final : public CameraSource {
public:
    GstCameraSource();
    ~GstCameraSource() override;

    void beginListing() override { list(); }
    QString trouble() override { return initGStreamer(); }
    QStringList names() override;
    QString open(const CameraRequest& request) override;
    void stop() override;
    std::uint64_t currentSource() const override { return source_; }
    void setFrameHandler(FrameHandler handler) override { frameHandler_ = std::move(handler); }
    void setPresenceHandler(PresenceHandler handler) override { presenceHandler_ = std::move(handler); }

private:
    /// A camera that is to run, as long as nobody stops it.
    struct Opening {
        CameraRequest request;
        FrameHandler frame;
        PresenceHandler presence;
        std::shared_ptr<GstCameraPipeline> pipeline; ///< null while there is none to be had
        std::string key;                             ///< of what the pipeline reads
        steady_clock::time_point since;              ///< when the pipeline was made
        bool present = true;
        std::size_t attempts = 0;
    };

    GstCameraList& list();
    std::vector<Camera> cameras() { return list().cameras(); }
    QString openFirstWay(const Camera& camera, Opening& opening);
    QString openOneWay(const ListedCamera& way, Opening& opening, steady_clock::time_point deadline);
    bool begin(const ListedCamera& way, Opening& opening);
    void listChanged();
    void pipelineStarted(std::uint64_t number);
    void pipelineEnded(std::uint64_t number);
    void lose();
    void takeUpAgain();

    FrameHandler frameHandler_;
    PresenceHandler presenceHandler_;
    std::uint64_t source_ = 0;
    std::uint64_t pipelines_ = 0; ///< made so far; the number of the latest
    std::optional<Opening> opening_;
    QTimer retry_;                        ///< also brings what other threads report to the main thread
    std::unique_ptr<GstCameraList> list_; ///< null until somebody wants a camera: GStreamer takes its time to start
};

GstCameraSource::GstCameraSource()
{
    retry_.setSingleShot(true);
    retry_.setInterval(kRetry);
    QObject::connect(&retry_, &QTimer::timeout, &retry_, [this] { takeUpAgain(); });
}

GstCameraSource::~GstCameraSource()
{
    stop();
    list_.reset();
}

GstCameraList& GstCameraSource::list()
{
    if (!list_)
        list_ = std::make_unique<GstCameraList>([this] {
            QMetaObject::invokeMethod(
                &retry_, [this] { listChanged(); }, Qt::QueuedConnection);
        });
    return *list_;
}

QStringList GstCameraSource::names()
{
    QStringList result;
    for (const Camera& camera : cameras())
        result.append(camera.name);
    return result;
}

QString GstCameraSource::open(const CameraRequest& request)
{
    stop();
    ++source_;
    if (QString trouble = initGStreamer(); !trouble.isEmpty())
        return trouble;
    if (!cameraPresetSize(request.preset))
        return QCoreApplication::translate("GstCamera", "The camera %1 has no resolution number %2.")
            .arg(request.name)
            .arg(request.preset);
    const std::vector<Camera> present = cameras();
    const auto camera = std::find_if(present.begin(), present.end(),
                                     [&request](const Camera& each) { return each.name == request.name; });
    if (camera == present.end())
        return QCoreApplication::translate("GstCamera", "There is no camera named %1.").arg(request.name);
    Opening opening{.request = request,
                    .frame = frameHandler_,
                    .presence = presenceHandler_,
                    .pipeline = nullptr,
                    .key = {},
                    .since = steady_clock::now()};
    const QString trouble = openFirstWay(*camera, opening);
    if (trouble.isEmpty())
        opening_ = std::move(opening);
    return trouble;
}

/// Opens the camera by the first of the services that gives it. Empty on success, else what the first one said.
QString GstCameraSource::openFirstWay(const Camera& camera, Opening& opening)
{
    const auto deadline = steady_clock::now() + kOpen;
    QString trouble;
    for (const ListedCamera& way : camera.ways) {
        if (deadline - steady_clock::now() < kLeastOpen)
            break;
        const QString reason = openOneWay(way, opening, deadline);
        if (reason.isEmpty())
            return {};
        if (trouble.isEmpty())
            trouble = reason;
    }
    return trouble;
}

QString GstCameraSource::openOneWay(const ListedCamera& way, Opening& opening, steady_clock::time_point deadline)
{
    opening.pipeline.reset();
    if (!begin(way, opening))
        return QCoreApplication::translate("GstCamera", "The camera %1 does not offer this resolution.").arg(way.name);
    const QString reason = opening.pipeline->waitUntilRunning(deadline);
    if (!reason.isEmpty())
        opening.pipeline->abandon();
    return reason;
}

/// False when the camera does not offer the resolution.
bool GstCameraSource::begin(const ListedCamera& way, Opening& opening)
{
    const GstPtr<GstCaps> offered(gst_device_get_caps(way.device.get()));
    const GstCameraCaps caps(offered.get());
    const auto choice = chooseCameraMode(caps.modes(), opening.request.preset);
    if (!choice)
        return false;
    const std::uint64_t number = ++pipelines_;
    GstCameraPipeline::Job job;
    job.device = way.device;
    job.name = opening.request.name;
    job.caps = caps.capsOf(*choice);
    job.convert = caps.needsConversion(*choice);
    job.picture = choice->picture;
    job.source = source_;
    job.frame = opening.frame;
    job.started = [this, number] {
        QMetaObject::invokeMethod(
            &retry_, [this, number] { pipelineStarted(number); }, Qt::QueuedConnection);
    };
    job.ended = [this, number] {
        QMetaObject::invokeMethod(
            &retry_, [this, number] { pipelineEnded(number); }, Qt::QueuedConnection);
    };
    opening.pipeline = GstCameraPipeline::start(std::move(job));
    opening.key = way.key;
    opening.since = steady_clock::now();
    return true;
}

void GstCameraSource::stop()
{
    retry_.stop();
    if (opening_ && opening_->pipeline)
        opening_->pipeline->stop();
    opening_.reset();
}

void GstCameraSource::listChanged()
{
    if (!opening_)
        return;
    const std::vector<Camera> present = cameras();
    const bool listed = std::any_of(present.begin(), present.end(), [this](const Camera& camera) {
        return std::any_of(camera.ways.begin(), camera.ways.end(),
                           [this](const ListedCamera& way) { return way.key == opening_->key; });
    });
    if (!listed)
        lose();
    if (opening_ && !opening_->present)
        takeUpAgain();
}

void GstCameraSource::pipelineStarted(std::uint64_t number)
{
    if (!opening_ || number != pipelines_ || !opening_->pipeline || opening_->present)
        return;
    opening_->present = true;
    if (const PresenceHandler handler = opening_->presence)
        handler(true);
}

void GstCameraSource::pipelineEnded(std::uint64_t number)
{
    if (opening_ && number == pipelines_)
        lose();
}

/// The pipeline is of no use any more; the camera may come back.
void GstCameraSource::lose()
{
    if (opening_->pipeline)
        opening_->pipeline->abandon();
    opening_->pipeline.reset();
    retry_.start();
    if (!std::exchange(opening_->present, false))
        return;
    if (const PresenceHandler handler = opening_->presence)
        handler(false);
}

void GstCameraSource::takeUpAgain()
{
    if (!opening_ || opening_->present)
        return;
    retry_.start();
    if (opening_->pipeline) {
        if (!opening_->pipeline->isOpening() || steady_clock::now() - opening_->since < kAttempt)
            return;
        opening_->pipeline->abandon();
        opening_->pipeline.reset();
    }
    const std::vector<Camera> present = cameras();
    const auto camera = std::find_if(present.begin(), present.end(),
                                     [this](const Camera& each) { return each.name == opening_->request.name; });
    if (camera != present.end())
        begin(camera->ways[opening_->attempts++ % camera->ways.size()], *opening_);
}

} // namespace

std::unique_ptr<CameraSource> createGstCameraSource()
{
    return std::make_unique<GstCameraSource>();
}

} // namespace lumavex
