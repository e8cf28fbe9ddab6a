// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/contract/camera_source/CameraWorlds.h"

#include <QThread>

#include <atomic>
#include <mutex>
#include <set>
#include <thread>

namespace lumavex {
namespace {

const QString kCamera = QStringLiteral("Desk camera");
const QString kOther = QStringLiteral("Other camera");
constexpr std::int64_t k640x480 = 5;

/// Records the frames and events of a camera.
class Seen {
public:
    CameraSource::FrameHandler handler()
    {
        return [this](const CameraFrame& frame) {
            ++inside_;
            EXPECT_EQ(inside_, 1) << "frames overlap";
            {
                const std::lock_guard lock(mutex_);
                threads_.insert(std::this_thread::get_id());
                latest_ = frame;
            }
            if (delay > 0)
                QThread::usleep(delay);
            ++count_;
            --inside_;
        };
    }
    int count() const { return count_; }
    bool isInFrame() const { return inside_ != 0; }
    CameraFrame latest() const
    {
        const std::lock_guard lock(mutex_);
        return latest_;
    }
    bool cameOnMainThread() const
    {
        const std::lock_guard lock(mutex_);
        return threads_.contains(std::this_thread::get_id());
    }
    std::atomic<unsigned long> delay = 0; ///< how long a frame is worked on, in microseconds

private:
    mutable std::mutex mutex_;
    std::set<std::thread::id> threads_;
    CameraFrame latest_;
    std::atomic<int> count_ = 0;
    std::atomic<int> inside_ = 0;
};

template <class World>
class CameraSourceContract : public testing::Test {
protected:
    void start(const QStringList& cameras)
    {
        for (const QString& name : cameras)
            world.plugIn(name);
        source = world.makeSource();
        source->setFrameHandler(seen.handler());
        source->setPresenceHandler([this](bool present) { presence.push_back(present); });
        ASSERT_TRUE(eventually([&] { return source->names() == cameras; }))
            << qPrintable(source->names().join(QStringLiteral(", ")));
    }
    bool framesArrive()
    {
        const int before = seen.count();
        return eventually([&] { return seen.count() > before + 2; });
    }

    World world;
    Seen seen;
    std::vector<bool> presence;
    std::unique_ptr<CameraSource> source; ///< last, so that no frame outlives what it is counted in
};

using Worlds = testing::Types<FakeCameraWorld, PipeWireCameraWorld>;
TYPED_TEST_SUITE(CameraSourceContract, Worlds);

TYPED_TEST(CameraSourceContract, RefusesWhatItCannotOpenAndSaysWhy)
{
    this->start({kCamera});
    this->source->stop();
    EXPECT_NE(this->source->open({kOther, k640x480}), QString());
    EXPECT_NE(this->source->open({kCamera.left(4), k640x480}), QString());
    EXPECT_NE(this->source->open({kCamera, 8}), QString());
    EXPECT_NE(this->source->open({kCamera, -1}), QString());
    EXPECT_EQ(this->source->currentSource(), 4U);
    serveEventsFor(50);
    EXPECT_EQ(this->seen.count(), 0);
    EXPECT_TRUE(this->presence.empty());
}

TYPED_TEST(CameraSourceContract, SendsFramesOfTheSizeAskedFor)
{
    this->start({kOther, kCamera});
    std::uint64_t opening = this->source->currentSource();
    for (const auto& [preset, size] :
         {std::pair<std::int64_t, QSize>{0, {320, 240}}, {4, {352, 288}}, {7, {1280, 720}}}) {
        if (preset == 4 && std::is_same_v<TypeParam, FakeCameraWorld>)
            continue; // the fake scales; looked at below
        ASSERT_EQ(this->source->open({kCamera, preset}), QString());
        ASSERT_TRUE(this->framesArrive());
        const CameraFrame frame = this->seen.latest();
        EXPECT_EQ(frame.size, size);
        EXPECT_EQ(frame.picture, size);
        EXPECT_EQ(frame.source, this->source->currentSource());
        EXPECT_EQ(frame.source, ++opening) << "opening again marks the frames anew";
    }
    EXPECT_FALSE(this->seen.cameOnMainThread());
}

TYPED_TEST(CameraSourceContract, AnOpeningThatIsBegunIsToldOnceAndTheEarlierCameraIsSilentAtOnce)
{
    this->start({kCamera, kOther});
    std::vector<QString> outcomes;
    const auto tell = [&outcomes](const QString& trouble) { outcomes.push_back(trouble); };
    EXPECT_NE(this->source->beginOpening({kCamera.left(4), k640x480}, tell), QString());
    EXPECT_NE(this->source->beginOpening({kCamera, 8}, tell), QString());
    ASSERT_EQ(this->source->open({kCamera, k640x480}), QString());
    ASSERT_TRUE(this->framesArrive());
    for (const QString& name : {kOther, kCamera, kCamera}) // the second takes the place of the first before it opened
        ASSERT_EQ(this->source->beginOpening({name, k640x480}, tell), QString());
    EXPECT_FALSE(this->seen.isInFrame());
    EXPECT_TRUE(outcomes.empty()) << "told before the event loop";
    ASSERT_TRUE(eventually([&] { return !outcomes.empty(); }));
    ASSERT_TRUE(this->framesArrive());
    EXPECT_EQ(this->seen.latest().source, this->source->currentSource());
    EXPECT_EQ(this->source->currentSource(), 6U);
    EXPECT_EQ(this->source->beginOpening({kCamera, k640x480}, tell), QString());
    this->source->stop();
    const int count = this->seen.count();
    serveEventsFor(300);
    EXPECT_EQ(this->seen.count(), count);
    EXPECT_EQ(outcomes, std::vector<QString>{QString()});
    EXPECT_TRUE(this->presence.empty());
}

TYPED_TEST(CameraSourceContract, NoFrameIsInFlightAfterStop)
{
    this->start({kCamera});
    this->seen.delay = 3000;
    for (int round = 0; round < 5; ++round) {
        ASSERT_EQ(this->source->open({kCamera, k640x480}), QString());
        ASSERT_TRUE(this->framesArrive());
        this->source->stop();
        EXPECT_FALSE(this->seen.isInFrame());
        const int count = this->seen.count();
        serveEventsFor(150);
        EXPECT_EQ(this->seen.count(), count);
    }
    EXPECT_TRUE(this->presence.empty());
}

TYPED_TEST(CameraSourceContract, TakesALostCameraUpAgain)
{
    this->start({kCamera, kOther});
    ASSERT_EQ(this->source->open({kCamera, k640x480}), QString());
    ASSERT_TRUE(this->framesArrive());
    for (int round = 0; round < 2; ++round) {
        this->presence.clear();
        this->world.unplugFirst(kCamera);
        ASSERT_TRUE(eventually([&] { return !this->presence.empty(); }));
        EXPECT_EQ(this->presence, std::vector<bool>{false});
        serveEventsFor(100);
        const int silent = this->seen.count();
        serveEventsFor(200);
        EXPECT_EQ(this->seen.count(), silent);
        this->world.plugIn(kCamera);
        ASSERT_TRUE(eventually([&] { return this->presence.size() > 1; }));
        EXPECT_EQ(this->presence, (std::vector<bool>{false, true}));
        EXPECT_TRUE(this->framesArrive());
        EXPECT_EQ(this->seen.latest().source, this->source->currentSource());
    }
    this->world.unplugFirst(kOther);
    serveEventsFor(200);
    EXPECT_EQ(this->presence.size(), 2U) << "another camera is none of ours";
}

TYPED_TEST(CameraSourceContract, ALostCameraThatIsStoppedStaysStopped)
{
    this->start({kCamera});
    ASSERT_EQ(this->source->open({kCamera, k640x480}), QString());
    ASSERT_TRUE(this->framesArrive());
    this->world.unplugFirst(kCamera);
    ASSERT_TRUE(eventually([&] { return !this->presence.empty(); }));
    this->source->stop();
    const int count = this->seen.count();
    this->world.plugIn(kCamera);
    ASSERT_TRUE(eventually([&] { return this->source->names().contains(kCamera); }));
    serveEventsFor(300);
    EXPECT_EQ(this->seen.count(), count);
    EXPECT_EQ(this->presence, std::vector<bool>{false});
}

TYPED_TEST(CameraSourceContract, OfTwoCamerasWithOneNameTheFirstIsOpened)
{
    this->start({kCamera, kCamera});
    ASSERT_EQ(this->source->open({kCamera, k640x480}), QString());
    ASSERT_TRUE(this->framesArrive());
    // Only if the first is the open one is it missed; the second then takes its place.
    this->world.unplugFirst(kCamera);
    ASSERT_TRUE(eventually([&] { return this->presence.size() == 2; }));
    EXPECT_EQ(this->presence, (std::vector<bool>{false, true}));
    EXPECT_TRUE(this->framesArrive());
}

} // namespace
} // namespace lumavex
