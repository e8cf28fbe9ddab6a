// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/late/LateMedia.h"

#include "platform/fake/FakeCameraSource.h"
#include "platform/fake/FakeSoundRecorder.h"
#include "platform/fake/FakeSoundSettings.h"

#include <QCoreApplication>

#include <gmock/gmock.h>

#include <atomic>

namespace lumavex {
namespace {

const QString kCamera = QStringLiteral("Camera");
const QString kTrouble = QStringLiteral("It is not there.");

/// Of the library that is loaded; the library's functions are plain ones.
FakeCameraSource* cameras = nullptr;
std::shared_ptr<FakeSound> sound;

const MediaBackends fakeBackends = {
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
    int asked = 0;
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

TEST(LateMedia, IsNotLoadedBeforeItIsNeeded)
{
    Library library{{&fakeBackends, {}}};
    const auto source = createLateCameraSource(library.loader());
    const auto settings = createLateSoundSettings(library.loader());
    const auto createRecorder = lateSoundRecorderFactory(library.loader());
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

TEST(LateMedia, CameraTellsHandlersSetBeforeAndAfterItWasLoaded)
{
    Library library{{&fakeBackends, {}}};
    const auto source = createLateCameraSource(library.loader());
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

TEST(LateMedia, WithoutItsLibraryThereIsNoCameraAndNoSoundAndTheUserIsToldWhy)
{
    Library library{{nullptr, kTrouble}};
    const auto source = createLateCameraSource(library.loader());
    source->beginListing();
    EXPECT_EQ(source->names(), QStringList());
    EXPECT_EQ(source->open({kCamera, 0}), kTrouble);
    EXPECT_EQ(source->currentSource(), 1U);
    const auto settings = createLateSoundSettings(library.loader());
    EXPECT_EQ(settings->nameOfInput(), std::nullopt);
    EXPECT_FALSE(settings->open());

    QStringList told;
    const auto createRecorder = lateSoundRecorderFactory(library.loader());
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
    {
        const auto gone = createRecorder(QStringLiteral("b.wav"), tell);
        gone->record({});
    }
    QCoreApplication::processEvents();
    EXPECT_EQ(told.size(), 1) << "by a recorder that is gone";
}

} // namespace
} // namespace lumavex
