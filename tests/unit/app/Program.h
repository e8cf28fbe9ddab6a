// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/AppDelegate.h"
#include "app/MessageStrip.h"
#include "app/StandardStreams.h"
#include "app/Window_Main.h"
#include "app/connectCommands.h"
#include "tests/fakes/FakeCameraSource.h"
#include "tests/fakes/FakeChildProcess.h"
#include "tests/fakes/FakeDialogs.h"
#include "tests/fakes/FakeMovieWriter.h"
#include "tests/fakes/FakeProcessorLoad.h"
#include "tests/fakes/FakeRunLoop.h"
#include "tests/fakes/FakeScreenGrabber.h"
#include "tests/fakes/FakeSoundRecorder.h"
#include "tests/fakes/FakeSoundSettings.h"
#include "tests/fakes/FakeUserDefaults.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <optional>

namespace lumavex {

/// A desktop that blends translucent windows, so that a window over the whole screen needs nothing of it.
class BlendingOverlay final : public ScreenOverlay {
public:
    bool blendsTranslucentWindows() override { return true; }
    void setShape(quintptr, const QRegion&) override {}
    std::unique_ptr<PointerCatcher> catchPointer(const QRect&, PointerHandler) override { return nullptr; }
};

/// The whole program over fakes, in a documents folder of its own.
struct Program : testing::Test {
    QTemporaryDir home;
    FakeClock clock;
    Platform platform;
    FakeRunLoop* loop = nullptr;
    FakeUserDefaults* store = nullptr;
    FakeUserDefaults* more = nullptr; ///< what lumavex/more.ini holds
    FakeDialogs* dialogs = nullptr;
    FakeScreenGrabber* screen = nullptr;
    FakeProcessorLoad* load = nullptr;
    FakeCameraSource* cameras = nullptr;
    FakeSoundSettings* soundSettings = nullptr;
    std::shared_ptr<FakeMovie> movie = std::make_shared<FakeMovie>();
    std::shared_ptr<FakeSound> sound = std::make_shared<FakeSound>();
    std::vector<FakeChildProcess::Launch> launches;
    FakeChildProcess::Script encoder;
    std::optional<MovieFacts> readMovie; ///< what a saved movie holds; nothing: what was recorded
    LaunchOptions options;
    StandardStreams streams;
    std::unique_ptr<Window_Main> window;
    std::unique_ptr<AppDelegate> app;

    Program()
    {
        qputenv("HOME", QFile::encodeName(home.path()));
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(home.path() + QStringLiteral("/.config")));
        const auto keep = [](auto& slot, auto object) {
            auto* raw = object.get();
            slot = std::move(object);
            return raw;
        };
        store = keep(platform.userDefaults, std::make_unique<FakeUserDefaults>());
        more = keep(platform.moreSettings, std::make_unique<FakeUserDefaults>());
        dialogs = keep(platform.dialogs, std::make_unique<FakeDialogs>());
        screen = keep(platform.screen, std::make_unique<FakeScreenGrabber>());
        load = keep(platform.processorLoad, std::make_unique<FakeProcessorLoad>());
        cameras = keep(platform.cameras, std::make_unique<FakeCameraSource>());
        soundSettings = keep(platform.soundSettings, std::make_unique<FakeSoundSettings>());
        platform.overlay = std::make_unique<BlendingOverlay>();
        platform.createMovieWriter = fakeMovieWriters(movie);
        platform.createSoundRecorder = fakeSoundRecorderFactory(sound);
        platform.readMovie = [this](const QString&) {
            return readMovie.value_or(
                MovieFacts{{}, MovieFacts::Track{std::int64_t(movie->appends().size()), movie->seconds()}, {}});
        };
        encoder.work = [](const QStringList& arguments) {
            QFile joined(arguments.last());
            if (joined.open(QIODevice::WriteOnly))
                joined.write("joined");
        };
        platform.createChildProcess = [this] { return FakeChildProcess::factory(encoder, &launches)(); };
        paint(Qt::red);
    }

    void paint(const QColor& colour)
    {
        QImage picture(640, 480, QImage::Format_RGB32);
        picture.fill(colour);
        screen->setScreen(picture);
    }

    /// Starts the program; one that runs ends first, and its timers with it.
    bool launch()
    {
        app.reset();
        auto made = std::make_unique<FakeRunLoop>(clock);
        loop = made.get();
        platform.runLoop = std::move(made);
        window = std::make_unique<Window_Main>();
        app = std::make_unique<AppDelegate>(platform, *window, options);
        connectCommands(*window, *app);
        app->awakeFromNib();
        const bool running = app->applicationDidFinishLaunching();
        if (running) {
            app->application.sffmpegPath = QStringLiteral("/bin/true"); // launched by the fake only
            // Modal windows would wait for somebody.
            app->application.b_Show_Select_Region_How_To = 0;
            app->application.b_Show_FollowCursor_How_To = 0;
            app->application.b_Show_WindowExclusive_How_To = 0;
        }
        return running;
    }

    const MessageStrip& messages() const { return *window->findChild<MessageStrip*>(); }
    /// The newest message of the main window; empty when there is none.
    QString message() const { return messages().newestText(); }
    QString videoFolder() const { return home.filePath(QStringLiteral("Documents/LumavexVideo")); }
    double seconds(CMTime time) const { return CMTimeGetSeconds(time); }
};

} // namespace lumavex
