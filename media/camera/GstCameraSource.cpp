// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/camera/GstCameraSource.h"

#include "media/camera/GstCameraList.h"
#include "media/camera/GstCameraPipeline.h"
#include "media/gstreamer/GstInit.h"
#include "platform/PlatformText.h"

#include <QTimer>

#include <algorithm>
#include <optional>
#include <utility>

namespace lumavex {
namespace {

using std::chrono::steady_clock;

constexpr std::chrono::milliseconds kOpen{2900};
/// Less time is not enough to try another service.
constexpr std::chrono::milliseconds kLeastOpen{300};
constexpr std::chrono::seconds kRetry{1};
/// An attempt to reopen a lost camera that takes longer is abandoned for another.
constexpr std::chrono::seconds kAttempt{4};

QString missing(const QString& name)
{
    return PlatformText::tr("There is no camera named %1.").arg(name);
}

QString noSuchResolution(const QString& name)
{
    return PlatformText::tr("The camera %1 does not offer this resolution.").arg(name);
}

class GstCameraSource final : public CameraSource {
public:
    GstCameraSource();
    ~GstCameraSource() override;

    void beginListing() override { list(); }
    QString trouble() override { return initGStreamer(); }
    QStringList names() override;
    QString open(const CameraRequest& request) override;
    QString beginOpening(const CameraRequest& request, OutcomeHandler outcome) override;
    void stop() override;
    std::uint64_t currentSource() const override { return source_; }
    void setFrameHandler(FrameHandler handler) override { frameHandler_ = std::move(handler); }
    void setPresenceHandler(PresenceHandler handler) override { presenceHandler_ = std::move(handler); }

private:
    /// A camera that is to run until somebody stops it.
    struct Opening {
        CameraRequest request;
        FrameHandler frame;
        PresenceHandler presence;
        std::shared_ptr<GstCameraPipeline> pipeline; ///< null while the camera is not available
        std::string key;                             ///< key of the listing that the pipeline reads
        steady_clock::time_point since;              ///< start of the pipeline
        bool present = true;
        std::size_t attempts = 0;
        OutcomeHandler outcome; ///< null once the outcome is reported; the members below are for an opening before that
        std::vector<ListedCamera> ways;            ///< the first `attempts` of them have been tried
        QString trouble;                           ///< reason of the first failure
        std::shared_ptr<GstCameraPipeline> before; ///< releases its camera first
    };

    GstCameraList& list();
    std::vector<Camera> cameras() { return list().cameras(); }
    QString find(const CameraRequest& request, Camera& found);
    Opening openingOf(const CameraRequest& request) const;
    QString openByFirstService(const Camera& camera, Opening& opening);
    QString openByService(const ListedCamera& way, Opening& opening, steady_clock::time_point deadline);
    bool begin(const ListedCamera& way, Opening& opening);
    bool beginNextService();
    void serviceFailed(const QString& trouble);
    void decide(const QString& trouble);
    void loseOrTryNext(const QString& trouble);
    std::shared_ptr<GstCameraPipeline> release();
    void listChanged();
    void pipelineStarted(std::uint64_t number);
    void pipelineEnded(std::uint64_t number);
    void lose();
    void reopen();

    FrameHandler frameHandler_;
    PresenceHandler presenceHandler_;
    std::uint64_t source_ = 0;
    std::uint64_t pipelines_ = 0; ///< number made so far, which is also the number of the latest
    std::optional<Opening> opening_;
    QTimer retry_;                        ///< also the context in which reports of other threads reach the main thread
    QTimer patience_;                     ///< runs while the outcome of an opening is not yet reported
    std::unique_ptr<GstCameraList> list_; ///< null until a camera is needed: GStreamer starts slowly
};

GstCameraSource::GstCameraSource()
{
    retry_.setSingleShot(true);
    retry_.setInterval(kRetry);
    QObject::connect(&retry_, &QTimer::timeout, &retry_, [this] { reopen(); });
    patience_.setSingleShot(true);
    patience_.setInterval(kOpen);
    QObject::connect(&patience_, &QTimer::timeout, &patience_,
                     [this] { decide(opening_->pipeline->waitUntilRunning(steady_clock::now())); });
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

/// Empty when the camera is found, else the reason.
QString GstCameraSource::find(const CameraRequest& request, Camera& found)
{
    if (QString trouble = initGStreamer(); !trouble.isEmpty())
        return trouble;
    if (!cameraPreset(request.preset))
        return PlatformText::tr("The camera %1 has no resolution number %2.").arg(request.name).arg(request.preset);
    const std::vector<Camera> present = cameras();
    const auto camera = std::find_if(present.begin(), present.end(),
                                     [&request](const Camera& each) { return each.name == request.name; });
    if (camera == present.end())
        return missing(request.name);
    found = *camera;
    return {};
}

GstCameraSource::Opening GstCameraSource::openingOf(const CameraRequest& request) const
{
    Opening opening;
    opening.request = request;
    opening.frame = frameHandler_;
    opening.presence = presenceHandler_;
    return opening;
}

QString GstCameraSource::open(const CameraRequest& request)
{
    stop();
    ++source_;
    Camera camera;
    if (QString trouble = find(request, camera); !trouble.isEmpty())
        return trouble;
    Opening opening = openingOf(request);
    const QString trouble = openByFirstService(camera, opening);
    if (trouble.isEmpty())
        opening_ = std::move(opening);
    return trouble;
}

QString GstCameraSource::beginOpening(const CameraRequest& request, OutcomeHandler outcome)
{
    auto before = release();
    ++source_;
    Camera camera;
    if (QString trouble = find(request, camera); !trouble.isEmpty())
        return trouble;
    opening_ = openingOf(request);
    opening_->before = std::move(before);
    opening_->ways = std::move(camera.ways);
    if (!beginNextService()) {
        release();
        return noSuchResolution(request.name);
    }
    opening_->outcome = std::move(outcome);
    patience_.start();
    return {};
}

/// False when none of the remaining services offers the resolution.
bool GstCameraSource::beginNextService()
{
    while (opening_->attempts < opening_->ways.size())
        if (begin(opening_->ways[opening_->attempts++], *opening_))
            return true;
    return false;
}

/// Ends the current attempt and begins the next; when there is none, the opening has failed.
void GstCameraSource::serviceFailed(const QString& trouble)
{
    opening_->pipeline->abandon();
    opening_->before = opening_->pipeline;
    if (opening_->trouble.isEmpty())
        opening_->trouble = trouble;
    if (!beginNextService())
        decide(opening_->trouble);
}

/// Ends the opening and reports its outcome.
void GstCameraSource::decide(const QString& trouble)
{
    patience_.stop();
    const OutcomeHandler outcome = std::exchange(opening_->outcome, nullptr);
    if (!trouble.isEmpty())
        release();
    outcome(trouble);
}

/// Opens the camera by the first service that succeeds. Empty on success, else the reason of the first failure.
QString GstCameraSource::openByFirstService(const Camera& camera, Opening& opening)
{
    const auto deadline = steady_clock::now() + kOpen;
    QString trouble;
    for (const ListedCamera& way : camera.ways) {
        if (deadline - steady_clock::now() < kLeastOpen)
            break;
        const QString reason = openByService(way, opening, deadline);
        if (reason.isEmpty())
            return {};
        if (trouble.isEmpty())
            trouble = reason;
    }
    return trouble;
}

QString GstCameraSource::openByService(const ListedCamera& way, Opening& opening, steady_clock::time_point deadline)
{
    opening.pipeline.reset();
    if (!begin(way, opening))
        return noSuchResolution(way.name);
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
    job.before = std::exchange(opening.before, nullptr);
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
    if (const auto pipeline = release())
        pipeline->stop();
}

/// No handler is called any more. Returns the pipeline that still has to release its camera, or null.
std::shared_ptr<GstCameraPipeline> GstCameraSource::release()
{
    retry_.stop();
    patience_.stop();
    auto pipeline = opening_ ? opening_->pipeline : nullptr;
    if (pipeline)
        pipeline->abandon();
    opening_.reset();
    return pipeline;
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
        loseOrTryNext(missing(opening_->request.name));
    if (opening_ && !opening_->present)
        reopen();
}

void GstCameraSource::pipelineStarted(std::uint64_t number)
{
    if (!opening_ || number != pipelines_ || !opening_->pipeline)
        return;
    if (opening_->outcome)
        decide({});
    if (!opening_ || opening_->present)
        return;
    opening_->present = true;
    if (const PresenceHandler handler = opening_->presence)
        handler(true);
}

void GstCameraSource::pipelineEnded(std::uint64_t number)
{
    if (opening_ && number == pipelines_ && opening_->pipeline)
        loseOrTryNext(opening_->pipeline->waitUntilRunning(steady_clock::now()));
}

/// The pipeline is no longer usable, for this reason.
void GstCameraSource::loseOrTryNext(const QString& trouble)
{
    if (opening_->outcome)
        serviceFailed(trouble);
    else
        lose();
}

/// The pipeline is no longer usable; the camera may come back.
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

void GstCameraSource::reopen()
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
