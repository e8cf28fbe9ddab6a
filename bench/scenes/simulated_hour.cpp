// SPDX-License-Identifier: GPL-3.0-or-later
// simulated_hour [SECONDS]: the whole program with a simulated clock records an hour (3600 seconds) at 30 frames a
// second, with the real movie writer and a small screen that changes with every second frame. In the first minute
// everything changes with every frame, so that the encoders' queue once reaches its maximum; its later length is
// chance. Prints the number of frames and the growth of the resident memory in bytes after the first minute.
#include "app/AppDelegate.h"
#include "app/Window_Main.h"
#include "app/connectCommands.h"
#include "movie/JpegMovieWriter.h"
#include "tests/fakes/FakeCameraSource.h"
#include "tests/fakes/FakeChildProcess.h"
#include "tests/fakes/FakeDialogs.h"
#include "tests/fakes/FakeProcessorLoad.h"
#include "tests/fakes/FakeRunLoop.h"
#include "tests/fakes/FakeScreenGrabber.h"
#include "tests/fakes/FakeSoundRecorder.h"
#include "tests/fakes/FakeUserDefaults.h"

#include <QAction>
#include <QApplication>
#include <QFile>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>
#include <random>
#include <unistd.h>
#include <vector>

using namespace lumavex;

namespace {

class PlainOverlay final : public ScreenOverlay {
public:
    bool blendsTranslucentWindows() override { return true; }
    void setShape(quintptr, const QRegion&) override {}
    std::unique_ptr<PointerCatcher> catchPointer(const QRect&, PointerHandler) override { return nullptr; }
};

std::int64_t residentBytes()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    return file.open(QIODevice::ReadOnly) ? file.readAll().split(' ').at(1).toLongLong() * sysconf(_SC_PAGESIZE) : 0;
}

/// The screen's pictures, made in advance so that only the program's memory grows.
std::vector<QImage> screenPictures(int rowsThatDiffer)
{
    std::minstd_rand random;
    QImage picture(320, 240, QImage::Format_RGB32);
    picture.fill(Qt::blue);
    std::vector<QImage> pictures;
    for (int i = 0; i < 8; ++i) {
        for (int y = 0; y < rowsThatDiffer; ++y)
            for (int x = 0; x < picture.width(); ++x)
                picture.setPixel(x, y, 0xFF000000U | QRgb(random()));
        pictures.push_back(picture);
    }
    return pictures;
}

Platform simulatedPlatform(FakeClock& clock)
{
    Platform platform;
    platform.runLoop = std::make_unique<FakeRunLoop>(clock);
    platform.userDefaults = std::make_unique<FakeUserDefaults>();
    platform.moreSettings = std::make_unique<FakeUserDefaults>();
    platform.dialogs = std::make_unique<FakeDialogs>();
    platform.screen = std::make_unique<FakeScreenGrabber>();
    platform.overlay = std::make_unique<PlainOverlay>();
    platform.cameras = std::make_unique<FakeCameraSource>();
    platform.processorLoad = std::make_unique<FakeProcessorLoad>();
    platform.createMovieWriter = createJpegMovieWriter;
    platform.createSoundRecorder = fakeSoundRecorderFactory(std::make_shared<FakeSound>());
    platform.createChildProcess = FakeChildProcess::factory({}, nullptr);
    return platform;
}

} // namespace

int main(int argc, char** argv)
{
    constexpr int framesPerSecond = 30;
    const int seconds = argc > 1 ? std::atoi(argv[1]) : 3600;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QTemporaryDir home;
    qputenv("HOME", QFile::encodeName(home.path()));
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(home.path()));
    QApplication application(argc, argv);

    FakeClock clock;
    Platform platform = simulatedPlatform(clock);
    auto& loop = static_cast<FakeRunLoop&>(*platform.runLoop);
    auto& screen = static_cast<FakeScreenGrabber&>(*platform.screen);
    const std::vector<QImage> pictures = screenPictures(1);
    const std::vector<QImage> noise = screenPictures(240);
    screen.setScreen(noise.back());
    Window_Main window;
    LaunchOptions options;
    options.framesPerSecond = framesPerSecond;
    AppDelegate app(platform, window, options);
    connectCommands(window, app);
    app.awakeFromNib();
    if (!app.applicationDidFinishLaunching())
        return EXIT_FAILURE;
    app.recording.i_fps_of_Recording = framesPerSecond;
    app.createRefreshTimers();
    window.btnRecord->trigger();

    std::int64_t before = 0;
    for (int second = 0; second < seconds; ++second) {
        if (second == 60)
            before = residentBytes();
        for (int frame = 0; frame < framesPerSecond; ++frame) {
            if (const auto number = std::size_t(frame % 8); second < 60)
                screen.setScreen(noise[number]);
            else if (frame % 2 == 0)
                screen.setScreen(pictures[number]);
            loop.advance(Nanoseconds(std::chrono::seconds(1)) / framesPerSecond);
        }
    }
    const MovieWriterStatistics movie = app.recording.assetWriter->statistics();
    std::printf("%lld %lld\n", static_cast<long long>(movie.encoded + movie.spliced + movie.repeated),
                static_cast<long long>(residentBytes() - before));
    std::fflush(stdout);
    return EXIT_SUCCESS;
}
