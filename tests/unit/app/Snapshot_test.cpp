// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Unattended.h"
#include "recording/WorkingFolders.h"
#include "tests/unit/app/SourceControls.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSignalSpy>

#include <utility>

using namespace lumavex;
using namespace std::chrono_literals;

namespace {

/// A save panel that stays open while time passes.
class SlowPanels final : public Dialogs {
public:
    SlowPanels(std::function<void()> wait, QString folder) : wait_(std::move(wait)), folder_(std::move(folder)) {}

    int runAlert(const Alert& alert) override
    {
        alerts.append(alert.messageText);
        return static_cast<int>(alert.buttons.size()) - 1;
    }
    std::optional<QString> runSavePanel(const SavePanel& panel) override
    {
        EXPECT_EQ(++open_, 1) << "one panel at a time";
        proposed.append(panel.nameField);
        wait_();
        --open_;
        return folder_ + u'/' + panel.nameField;
    }
    std::optional<QString> runOpenPanel(const QString&, const QStringList&) override { return std::nullopt; }
    bool open(const QUrl&) override { return false; }

    QStringList proposed;
    QStringList alerts;

private:
    const std::function<void()> wait_;
    const QString folder_;
    int open_ = 0;
};

struct SnapshotTest : SourceControls {
    QString folder() const { return home.filePath(QStringLiteral("Documents/LumavexPicture")); }
    QStringList kept() const { return QDir(folder()).entryList(QDir::Files); }

    void begin()
    {
        ASSERT_TRUE(start(Camera::None));
        loop->advance(1500ms); // the preview is open
    }
    /// Takes a picture by the button and waits for its file, or for the alert instead.
    void take()
    {
        const TimerId before = app->compose.timer_Save_Picture;
        const std::size_t told = dialogs->alerts.size();
        window->toolbarTakePicture->trigger();
        loop->advance(100ms); // one refresh
        ASSERT_TRUE(until([&] { return app->compose.timer_Save_Picture != before || dialogs->alerts.size() > told; }));
    }
    /// Somewhere in the picture; invalid when there is none.
    static QColor colourOf(const QString& path)
    {
        const QImage picture(path);
        return picture.isNull() ? QColor() : picture.pixelColor(300, 10);
    }
    /// A picture in which every pixel counts.
    void paintScene(int seed)
    {
        QImage picture(640, 480, QImage::Format_RGB32);
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x)
                picture.setPixel(x, y, qRgb((x + seed) & 255, (y * 3 + seed) & 255, (x * y + seed) & 255));
        screen->setScreen(picture);
    }
};

} // namespace

TEST_F(SnapshotTest, RequestsWithinOneRefreshGiveOneFileWhichIsOfferedASecondLater)
{
    begin();
    app->setVideoOutputSize({320, 240});
    const QString saved = home.filePath(QStringLiteral("picture.png"));
    dialogs->savePaths = {saved};
    window->menuTakePicture->trigger();
    take();
    EXPECT_FALSE(app->compose.b_Take_Picture);
    ASSERT_EQ(kept().size(), 1);
    EXPECT_EQ(app->compose.s_Saved_Take_Picture, folder() + u'/' + kept().first());
    EXPECT_TRUE(QRegularExpression(QStringLiteral("^\\d{4}-\\d\\d-\\d\\d-\\d\\d-\\d\\d-\\d\\d\\.png$"))
                    .match(kept().first())
                    .hasMatch());
    EXPECT_EQ(QFileInfo(app->compose.s_Saved_Take_Picture).permissions() & 0x77, 0) << "for the user alone";
    const QString proposed = kept().first();

    loop->advance(899ms);
    EXPECT_TRUE(dialogs->savePanels.empty());
    loop->advance(101ms);
    ASSERT_EQ(dialogs->savePanels.size(), 1U);
    EXPECT_EQ(dialogs->savePanels[0].nameField, proposed);
    EXPECT_EQ(dialogs->savePanels[0].title, QStringLiteral("Select a folder to save the captured image"));
    const QImage picture(saved);
    EXPECT_EQ(picture.size(), QSize(320, 240));
    EXPECT_EQ(picture.pixelColor(300, 10), QColor(Qt::red));
    EXPECT_EQ(QFileInfo(saved).permissions() & QFile::ReadGroup, QFile::ReadGroup) << "a file like others";
    EXPECT_TRUE(kept().isEmpty());
    ASSERT_EQ(dialogs->alerts.size(), 1U);
    EXPECT_EQ(dialogs->alerts[0].messageText, QStringLiteral("Success"));
    EXPECT_EQ(dialogs->alerts[0].informativeText, QStringLiteral("Image file saved successfully."));
    EXPECT_EQ(dialogs->alerts[0].buttons, QStringList({QStringLiteral("View Image File"), QStringLiteral("Close")}));
    EXPECT_TRUE(dialogs->opened.empty());
    loop->advance(5s);
    EXPECT_EQ(dialogs->savePanels.size(), 1U);
}

TEST_F(SnapshotTest, ViewOpensTheSavedFileAndCancelKeepsThePictureUntilTheNextStart)
{
    begin();
    const QString saved = home.filePath(QStringLiteral("picture.png"));
    dialogs->savePaths = {saved};
    dialogs->answers = {0};
    take();
    loop->advance(1s);
    ASSERT_EQ(dialogs->opened.size(), 1U);
    EXPECT_EQ(dialogs->opened[0], QUrl::fromLocalFile(saved));

    const std::size_t told = dialogs->alerts.size();
    take();
    loop->advance(1s);
    EXPECT_EQ(dialogs->savePanels.size(), 2U);
    EXPECT_EQ(dialogs->alerts.size(), told);
    EXPECT_EQ(kept().size(), 1);
    ASSERT_TRUE(launch());
    EXPECT_TRUE(kept().isEmpty());
}

TEST_F(SnapshotTest, APictureThatCannotBeSavedThereStaysAndMayGoElsewhere)
{
    begin();
    take();
    const QString saved = home.filePath(QStringLiteral("picture.png"));
    dialogs->savePaths = {home.filePath(QStringLiteral("nowhere/picture.png")), folder() + QStringLiteral("/mine.png"),
                          saved};
    dialogs->answers = {0, 0, 1};
    loop->advance(1s);
    ASSERT_EQ(dialogs->alerts.size(), 3U);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(dialogs->alerts[i].messageText, QStringLiteral("Error"));
        EXPECT_TRUE(dialogs->alerts[i].informativeText.contains(app->compose.s_Saved_Take_Picture));
    }
    EXPECT_EQ(dialogs->alerts[2].messageText, QStringLiteral("Success"));
    EXPECT_FALSE(QImage(saved).isNull());
}

TEST_F(SnapshotTest, APictureThatCannotBeWrittenIsToldAndStillSavedElsewhere)
{
    begin();
    ASSERT_TRUE(QDir(folder()).removeRecursively());
    const QString saved = home.filePath(QStringLiteral("picture.png"));
    dialogs->savePaths = {home.filePath(QStringLiteral("nowhere/picture.png")), saved};
    dialogs->answers = {0, 0};
    take();
    ASSERT_EQ(dialogs->alerts.size(), 1U);
    EXPECT_EQ(dialogs->alerts[0].messageText, QStringLiteral("Error"));
    loop->advance(1s);
    ASSERT_EQ(dialogs->alerts.size(), 3U);
    EXPECT_EQ(QImage(saved).pixelColor(300, 10), QColor(Qt::red));

    take();
    loop->advance(1s);
    EXPECT_EQ(dialogs->savePanels.size(), 2U) << "whoever closes the alert gives it up";
}

TEST_F(SnapshotTest, PicturesTakenShortlyAfterOneAnotherAreAllOfferedOneAtATime)
{
    begin();
    auto made = std::make_unique<SlowPanels>([this] { loop->advance(3s); }, home.path());
    SlowPanels& panels = *made;
    const auto replaced = std::exchange(platform.dialogs, std::move(made)); // taking a picture still looks at it
    take();
    const QString first = app->compose.s_Saved_Take_Picture;
    ASSERT_TRUE(until(
        [&] { return folder() + u'/' + dateStamp(QDateTime::currentDateTime()) + QStringLiteral(".png") != first; }));
    paint(Qt::blue);
    take();
    const QString second = app->compose.s_Saved_Take_Picture;
    ASSERT_NE(first, second);
    loop->advance(5s);
    EXPECT_EQ(panels.proposed, QStringList({QFileInfo(second).fileName(), QFileInfo(first).fileName()}));
    EXPECT_EQ(panels.alerts, QStringList({QStringLiteral("Success"), QStringLiteral("Success")}));
    EXPECT_EQ(QImage(home.filePath(QFileInfo(first).fileName())).pixelColor(300, 10), QColor(Qt::red));
    EXPECT_EQ(QImage(home.filePath(QFileInfo(second).fileName())).pixelColor(300, 10), QColor(Qt::blue));
    EXPECT_TRUE(kept().isEmpty());
}

TEST_F(SnapshotTest, EqualsTheFrameRecordedAtTheSameInstantPixelForPixel)
{
    ASSERT_TRUE(start(Camera::Running));
    window->menuBothScreenPrimary->trigger();
    app->compose.imgOverlay = QImage(50, 40, QImage::Format_ARGB32);
    app->compose.imgOverlay.fill(qRgba(255, 255, 0, 100));
    ++app->compose.serialOverlay;
    app->compose.bOverlay = true;
    app->compose.i_Position_Overlay = 0;
    app->compose.i_Size_Overlay = 7;
    paintScene(0);
    loop->advance(1500ms);
    window->btnRecord->trigger();
    QImage last;
    for (int i = 1; i <= 3; ++i) {
        paintScene(40 * i);
        const std::size_t before = movie->appends().size();
        take();
        const auto appends = movie->appends();
        ASSERT_EQ(appends.size(), before + 1);
        const QImage recorded = appends.back().picture;
        ASSERT_EQ(recorded.size(), QSize(640, 480));
        EXPECT_EQ(QImage(app->compose.s_Saved_Take_Picture).convertToFormat(recorded.format()), recorded);
        EXPECT_NE(recorded.pixel(30, 470 - 12), recorded.pixel(630, 470)) << "there is something to see";
        last = recorded;
        loop->advance(1s); // the panel, cancelled
    }
    // A repeated frame is in the picture, too.
    take();
    EXPECT_TRUE(movie->appends().back().repeated);
    EXPECT_EQ(QImage(app->compose.s_Saved_Take_Picture).convertToFormat(last.format()), last);
}

TEST_F(SnapshotTest, TheEndOfTheProgramWaitsForThePictureThatIsBeingWritten)
{
    begin();
    app->setVideoOutputSize({3000, 2000});
    paintScene(0);
    window->toolbarTakePicture->trigger();
    loop->advance(200ms);
    const QString path = app->compose.s_Saved_Take_Picture;
    ASSERT_FALSE(path.isEmpty());
    app.reset();
    EXPECT_EQ(QImage(path).size(), QSize(3000, 2000));
    QApplication::processEvents();
    EXPECT_TRUE(dialogs->savePanels.empty());
}

TEST_F(SnapshotTest, UnattendedAScreenThatCannotBeReadGivesNoPicture)
{
    options.snapshot = home.filePath(QStringLiteral("picture.png"));
    platform.dialogs = std::make_unique<UnattendedDialogs>(options, streams);
    ASSERT_TRUE(launch());
    screen->setTrouble(QStringLiteral("The screen is gone."));
    testing::internal::CaptureStderr();
    StandardStreams captured;
    UnattendedRun run(*app, *loop, captured, options, {});
    run.begin();
    loop->advance(2s);
    captured.finish();
    EXPECT_NE(testing::internal::GetCapturedStderr().find("The screen could not be read"), std::string::npos);
    EXPECT_FALSE(QFile::exists(options.snapshot));
    EXPECT_TRUE(kept().isEmpty());
}

TEST_F(SnapshotTest, UnattendedItIsTakenAtOnceAndNotWithoutTheCamerasPicture)
{
    FakeCamera camera;
    camera.name = cameraName;
    camera.interval = std::nullopt; // it sends what the test sends
    cameras->add(camera);
    ASSERT_TRUE(launch());
    store->texts[settingKey("s_Camera_Name")] = cameraName;
    store->texts[settingKey("i_Show_Secondary")] = QStringLiteral("1");
    options.snapshot = home.filePath(QStringLiteral("picture.png"));
    platform.dialogs = std::make_unique<UnattendedDialogs>(options, streams);

    for (const bool sends : {false, true}) {
        ASSERT_TRUE(launch());
        if (sends)
            QTimer::singleShot(0, [this] {
                QImage picture(320, 240, QImage::Format_RGB32);
                picture.fill(Qt::green);
                cameras->send(picture);
            });
        testing::internal::CaptureStderr();
        testing::internal::CaptureStdout();
        StandardStreams captured;
        UnattendedRun run(*app, *loop, captured, options, {});
        QSignalSpy finished(app.get(), &AppDelegate::pictureFinished);
        const Nanoseconds before = clock.time;
        run.begin();
        if (sends) {
            loop->advance(0s);
            EXPECT_TRUE(until([&] {
                loop->advance(0s);
                return !finished.isEmpty();
            }));
            EXPECT_LT(clock.time - before, 1s) << "although the rate is one a second";
        }
        captured.finish();
        const std::string errors = testing::internal::GetCapturedStderr();
        const std::string output = testing::internal::GetCapturedStdout();
        EXPECT_EQ(output, sends ? options.snapshot.toStdString() + '\n' : "");
        EXPECT_EQ(errors.find("sent no picture within 10 seconds") != std::string::npos, !sends) << errors;
        EXPECT_EQ(colourOf(options.snapshot), sends ? QColor(Qt::red) : QColor());
        if (sends) {
            EXPECT_EQ(QImage(options.snapshot).pixelColor(600, 400), QColor(Qt::green)) << "the camera's place";
        }
    }
}
