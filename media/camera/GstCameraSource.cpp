// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/camera/GstCameraSource.h"

#include "media/camera/GstCameraList.h"
#include "media/camera/GstCameraPipeline.h"
#include "media/gstreamer/GstInit.h"

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

QString missing(const QString& name)
{
    return QCoreApplication::translate("GstCamera", "There is no camera named %1.").arg(name);
}

QString noSuchResolution(const QString& name)
{
    return QCoreApplication::translate("GstCamera", "The camera %1 does not offer this resolution.").arg(name);
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
        OutcomeHandler outcome;                    ///< null unless it is still to be told; of such an opening:
        std::vector<ListedCamera> ways;            ///< the first `attempts` of them were tried
        QString trouble;                           ///< what the first of them said
        std::shared_ptr<GstCameraPipeline> before; ///< gives its camera back first
    };

    GstCameraList& list();
    std::vector<Camera> cameras() { return list().cameras(); }
    QString find(const CameraRequest& request, Camera& found);
    Opening openingOf(const CameraRequest& request) const;
    QString openFirstWay(const Camera& camera, Opening& opening);
    QString openOneWay(const ListedCamera& way, Opening& opening, steady_clock::time_point deadline);
    bool begin(const ListedCamera& way, Opening& opening);
    bool beginNextWay();
    void wayFailed(const QString& trouble);
    void decide(const QString& trouble);
    void loseOrTryNext(const QString& trouble);
    std::shared_ptr<GstCameraPipeline> letGo();
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
    QTimer patience_;                     ///< with an opening whose outcome is still to be told
    std::unique_ptr<GstCameraList> list_; ///< null until somebody wants a camera: GStreamer takes its time to start
};

GstCameraSource::GstCameraSource()
{
    retry_.setSingleShot(true);
    retry_.setInterval(kRetry);
    QObject::connect(&retry_, &QTimer::timeout, &retry_, [this] { takeUpAgain(); });
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

/// Empty when the camera is found, else why not.
QString GstCameraSource::find(const CameraRequest& request, Camera& found)
{
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
    const QString trouble = openFirstWay(camera, opening);
    if (trouble.isEmpty())
        opening_ = std::move(opening);
    return trouble;
}

QString GstCameraSource::beginOpening(const CameraRequest& request, OutcomeHandler outcome)
{
    auto before = letGo();
    ++source_;
    Camera camera;
    if (QString trouble = find(request, camera); !trouble.isEmpty())
        return trouble;
    opening_ = openingOf(request);
    opening_->before = std::move(before);
    opening_->ways = std::move(camera.ways);
    if (!beginNextWay()) {
        letGo();
        return noSuchResolution(request.name);
    }
    opening_->outcome = std::move(outcome);
    patience_.start();
    return {};
}

/// False when no way is left that offers the resolution.
bool GstCameraSource::beginNextWay()
{
    while (opening_->attempts < opening_->ways.size())
        if (begin(opening_->ways[opening_->attempts++], *opening_))
            return true;
    return false;
}

/// Ends the attempt that is under way and begins the next; without a next the opening has failed.
void GstCameraSource::wayFailed(const QString& trouble)
{
    opening_->pipeline->abandon();
    opening_->before = opening_->pipeline;
    if (opening_->trouble.isEmpty())
        opening_->trouble = trouble;
    if (!beginNextWay())
        decide(opening_->trouble);
}

/// The outcome is known.
void GstCameraSource::decide(const QString& trouble)
{
    patience_.stop();
    const OutcomeHandler outcome = std::exchange(opening_->outcome, nullptr);
    if (!trouble.isEmpty())
        letGo();
    outcome(trouble);
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
    if (const auto pipeline = letGo())
        pipeline->stop();
}

/// No handler is called any more. The pipeline that still has to give its camera back, or null.
std::shared_ptr<GstCameraPipeline> GstCameraSource::letGo()
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
        takeUpAgain();
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

/// The pipeline is of no use any more, for this reason.
void GstCameraSource::loseOrTryNext(const QString& trouble)
{
    if (opening_->outcome)
        wayFailed(trouble);
    else
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
