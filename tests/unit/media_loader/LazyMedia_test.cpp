// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/loader/LazyMedia.h"

#include "tests/fakes/FakeCameraSource.h"
#include "tests/fakes/FakeSoundRecorder.h"
#include "tests/fakes/FakeSoundSettings.h"

#include <QCoreApplication>

#include <gmock/gmock.h>

#include <atomic>
#include <future>

namespace lumavex {
namespace {

const QString kCamera = QStringLiteral("Camera");
const QString kTrouble = QStringLiteral("It is not there.");

/// State of the loaded library; the library's functions are plain ones.
FakeCameraSource* cameras = nullptr;
std::shared_ptr<FakeSound> sound;

const MediaBackends fakeBackends = {
    .stamp = "",
    .createCameraSource = []() -> std::unique_ptr<CameraSource> {
        auto source = std::make_unique<FakeCameraSource>();
        cameras = source.get();
        FakeCamera camera{.name = kCamera};
        camera.interval.reset();
        source->add(camera);
        return source;
    },
    .createSoundSettings = []() -> std::unique_ptr<SoundSettings> { return std::make_unique<FakeSoundSettings>(); },
    .createSoundRecorder =
        [](const QString& path, SoundRecorder::EventHandler onEvent) {
            return fakeSoundRecorderFactory(sound)(path, std::move(onEvent));
        },
};

/// A library that counts how often it is asked for.
struct Library {
    MediaLibrary library;
    std::atomic<int> asked = 0; ///< on whatever thread
    MediaLoader loader()
    {
        return [this]() -> const MediaLibrary& {
            ++asked;
            return library;
        };
    }
};

void send()
{
    QImage picture(640, 480, QImage::Format_RGB32);
    picture.fill(Qt::red);
    cameras->send(picture);
}

TEST(LazyMedia, IsNotLoadedBeforeItIsNeeded)
{
    Library library{{&fakeBackends, {}}};
    const auto source = createLazyCameraSource(library.loader());
    const auto settings = createLazySoundSettings(library.loader());
    const auto createRecorder = lazySoundRecorderFactory(library.loader());
    source->setFrameHandler([](const CameraFrame&) {});
    source->setPresenceHandler([](bool) {});
    source->stop();
    EXPECT_EQ(source->currentSource(), 0U);
    EXPECT_EQ(library.asked, 0);

    EXPECT_EQ(source->names(), QStringList{kCamera});
    EXPECT_EQ(settings->nameOfInput(), QStringLiteral("Microphone"));
    EXPECT_TRUE(settings->open());
    sound = std::make_shared<FakeSound>();
    const auto recorder = createRecorder(QStringLiteral("a.wav"), nullptr);
    ASSERT_EQ(sound->recordings.size(), 1U);
    EXPECT_EQ(sound->recordings.front()->path, QStringLiteral("a.wav"));
}

TEST(LazyMedia, CameraTellsHandlersSetBeforeAndAfterItWasLoaded)
{
    Library library{{&fakeBackends, {}}};
    const auto source = createLazyCameraSource(library.loader());
    std::atomic<int> before = 0;
    std::atomic<int> after = 0;
    std::vector<bool> presence;
    source->setFrameHandler([&](const CameraFrame&) { ++before; });
    source->setPresenceHandler([&](bool present) { presence.push_back(present); });
    ASSERT_EQ(source->open({kCamera, 0}), QString());
    EXPECT_EQ(source->currentSource(), 1U);
    send();
    cameras->remove(kCamera);
    QCoreApplication::processEvents();
    EXPECT_EQ(before, 1);
    EXPECT_THAT(presence, testing::ElementsAre(false));

    source->setFrameHandler([&](const CameraFrame&) { ++after; });
    cameras->add({.name = kCamera, .interval = std::nullopt});
    ASSERT_EQ(source->open({kCamera, 0}), QString());
    send();
    EXPECT_EQ(before, 1);
    EXPECT_EQ(after, 1);
    source->stop();
    EXPECT_FALSE(cameras->isRunning());
}

TEST(LazyMedia, WithoutItsLibraryThereIsNoCameraAndNoSoundAndTheUserIsToldWhy)
{
    Library library{{nullptr, kTrouble}};
    const auto source = createLazyCameraSource(library.loader());
    EXPECT_EQ(source->names(), QStringList());
    EXPECT_EQ(source->trouble(), kTrouble);
    EXPECT_EQ(source->open({kCamera, 0}), kTrouble);
    EXPECT_EQ(source->currentSource(), 1U);
    const auto settings = createLazySoundSettings(library.loader());
    EXPECT_EQ(settings->nameOfInput(), std::nullopt);
    EXPECT_FALSE(settings->open());

    QStringList told;
    const auto createRecorder = lazySoundRecorderFactory(library.loader());
    const auto tell = [&told](SoundEvent event, const QString& detail) {
        if (event == SoundEvent::Lost)
            told.append(detail);
    };
    const auto recorder = createRecorder(QStringLiteral("a.wav"), tell);
    recorder->record({});
    EXPECT_EQ(told, QStringList()) << "not before the event loop";
    recorder->pause({});
    recorder->record({});
    QCoreApplication::processEvents();
    EXPECT_EQ(told, QStringList{kTrouble});
    EXPECT_EQ(recorder->stop({}), kTrouble);
    const auto stopped = createRecorder(QStringLiteral("b.wav"), tell);
    stopped->record({});
    stopped->stop({});
    createRecorder(QStringLiteral("c.wav"), tell)->record({});
    QCoreApplication::processEvents();
    EXPECT_EQ(told.size(), 1) << "by a recorder that was stopped, or is gone";
}

TEST(LazyMedia, BeginningToListWaitsForNothing)
{
    std::promise<void> disk;
    std::atomic<bool> loaded = false;
    const MediaLibrary library{&fakeBackends, {}};
    const auto load = [&, ready = disk.get_future().share()]() -> const MediaLibrary& {
        ready.wait();
        loaded = true;
        return library;
    };
    {
        const auto source = createLazyCameraSource(load);
        source->beginListing();
        source->beginListing();
        EXPECT_FALSE(loaded);
        disk.set_value();
        EXPECT_EQ(source->names(), QStringList{kCamera});
    }
    QCoreApplication::processEvents(); // what the thread had to say is of a source that is gone
}

TEST(LazyMedia, ALibraryThatIsNoneIsRefused)
{
    for (const char* path : {"/nowhere/lumavex-media.so", "libdl.so.2"}) {
        const MediaLibrary library = loadMediaLibrary(QString::fromLatin1(path));
        EXPECT_EQ(library.backends, nullptr) << path;
        EXPECT_TRUE(library.trouble.contains(QStringLiteral("not installed completely"))) << path;
    }
    const MediaLibrary old = loadMediaLibrary(QStringLiteral(LUMAVEX_OLD_LIBRARY));
    EXPECT_EQ(old.backends, nullptr);
    EXPECT_TRUE(old.trouble.contains(QStringLiteral("of another version"))) << old.trouble.toStdString();
}

} // namespace
} // namespace lumavex
