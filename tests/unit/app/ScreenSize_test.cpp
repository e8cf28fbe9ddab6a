// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Unattended.h"
#include "app/WindowPlaces.h"
#include "app/connectCommands.h"
#include "capture/RegionHandles.h"
#include "compose/Window_Preview.h"
#include "tests/unit/app/Program.h"

#include <QMenu>
#include <QPushButton>
#include <QtTest/QTest>

using namespace lumavex;
using namespace std::chrono_literals;

namespace {

struct ScreenSize : Program {
    void show(int width, int height)
    {
        QImage picture(width, height, QImage::Format_RGB32);
        picture.fill(Qt::green);
        screen->setScreen(picture);
        loop->advance(1500ms);
    }
    QString text(MessageTopic topic) const { return messages().text(topic); }
    /// The shown buttons' texts.
    QStringList buttons() const
    {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QStringList texts;
        for (const QPushButton* button : messages().findChildren<QPushButton*>())
            texts.append(button->text());
        return texts;
    }
    void press(const QString& text)
    {
        for (QPushButton* button : messages().findChildren<QPushButton*>())
            if (button->text() == text)
                button->click();
        QTest::qWait(1);
    }
};

const QString newSize = QStringLiteral("The screen is 300 x 1000 now.");

} // namespace

TEST_F(ScreenSize, AnotherSizeIsFittedIntoTheRunningMovieAndOfferedAfterwards)
{
    ASSERT_TRUE(launch());
    window->btnRecord->trigger();
    loop->advance(2s);
    show(300, 1000);
    QImage frame;
    for (const FakeMovie::Append& append : movie->appends())
        if (!append.repeated)
            frame = append.picture;
    ASSERT_EQ(frame.size(), QSize(640, 480));
    EXPECT_EQ(frame.pixelColor(320, 240), QColor(Qt::green));
    EXPECT_EQ(frame.pixelColor(5, 240), QColor(Qt::black)) << "in its own proportions";
    EXPECT_EQ(app->frameInputs().screen.keepsShape, true) << "in the preview, too";
    EXPECT_EQ(app->capture.size_Screen, (CGSize{640, 480}));
    EXPECT_EQ(text(MessageTopic::ScreenSize), newSize);
    EXPECT_EQ(buttons(), QStringList()) << "the movie has its size";

    window->btnStop->trigger();
    loop->advance(1s);
    EXPECT_TRUE(buttons().contains(QStringLiteral("Use Its Size")));
    show(640, 480);
    EXPECT_EQ(text(MessageTopic::ScreenSize), QString());
    show(300, 1000);
    ASSERT_EQ(window->submenuRegionFrame->actions().size(), 4);
    press(QStringLiteral("Use Its Size"));
    EXPECT_EQ(text(MessageTopic::ScreenSize), QString());
    EXPECT_EQ(app->capture.size_Screen, (CGSize{300, 1000}));
    EXPECT_EQ(app->compose.size_Video_Output, (CGSize{300, 1000}));
    EXPECT_EQ(window->submenuRegionFrame->actions().size(), 1);
    EXPECT_EQ(window->submenuFollowCursorFrame->actions().size(), 1);
    EXPECT_EQ(window->submenuVideoOutputFrame->actions().size(), 3);
    EXPECT_TRUE(window->menuitemVideoOutputScreenResolution->isChecked());
    loop->advance(2s);
    EXPECT_FALSE(app->frameInputs().screen.keepsShape);
}

TEST_F(ScreenSize, ARegionKeepsItsPlaceFromTheTopUntilNothingOfItIsLeftToRecord)
{
    options.region = {400, 100, 100, 80};
    options.captureType = Region;
    ASSERT_TRUE(launch());
    show(640, 300);
    EXPECT_EQ(app->frameInputs().screen.cut, (CGRect{400, 120, 100, 80}));
    EXPECT_EQ(text(MessageTopic::Region), QString());
    show(400, 480);
    EXPECT_EQ(text(MessageTopic::Region), QStringLiteral("The region lies outside the screen, which is 400x480 pixels "
                                                         "large. Its picture is black until it is marked again."));
    EXPECT_TRUE(buttons().contains(QStringLiteral("Mark It Again")));
    window->withdrawMessage(MessageTopic::Region); // as the user does
    window->btnRecord->trigger();
    EXPECT_EQ(app->recording.m_RecordStatus, Idle) << "nothing of it would be seen";
    EXPECT_FALSE(text(MessageTopic::Region).isEmpty());
    show(401, 480);
    EXPECT_EQ(text(MessageTopic::Region), QString());

    options.recordSeconds = 6;
    dialogs->savePaths = {home.filePath(QStringLiteral("saved.mov"))};
    UnattendedRun run(*app, *loop, streams, options, {});
    run.begin();
    loop->advance(2s);
    show(400, 480);
    loop->advance(5s);
    EXPECT_EQ(run.exitStatus(), 3) << "black, and not as asked";
}

TEST_F(ScreenSize, TheOthersInPlaceOfTheChosenWindowKeepTheDisplaysProportions)
{
    ASSERT_TRUE(launch());
    app->capture.sWindowExclusive = QStringLiteral("Gone (1) (1)");
    app->capture.i_Type_Screen_Capture = WindowExclusive;
    show(300, 1000);
    EXPECT_EQ(app->frameInputs().screen.size_Screen, (CGSize{300, 1000}));
    EXPECT_TRUE(app->frameInputs().screen.keepsShape);
}

TEST(RegionHandles, AreMovedIntoAScreenThatShrinks)
{
    auto handles = centredHandles({320, 240}, {1280, 800}); // 480 to 800, 280 to 520 from above
    moveHandlesInside(handles, {1280, 800}, {640, 600});
    EXPECT_EQ(regionOfHandles(handles), (CGRect{320, 80, 320, 240}));
    moveHandlesInside(handles, {640, 600}, {300, 100});
    EXPECT_EQ(regionOfHandles(handles), (CGRect{0, 0, 300, 100}));
}

TEST(WindowPlaces, AWindowOutOfReachIsMovedTheShortestWay)
{
    const QRect area(0, 30, 800, 570);
    EXPECT_TRUE(isInReach({650, 300, 160, 200}, 20, {area})) << "nearly all of it, and its title bar";
    EXPECT_FALSE(isInReach({500, 300, 580, 200}, 20, {area, area})) << "half of it, on two mirrored screens";
    EXPECT_FALSE(isInReach({100, 10, 300, 200}, 20, {area})) << "its title bar lies under a panel";
    EXPECT_FALSE(isInReach({100, 560, 300, 200}, 20, {area})) << "its title bar is all there is";
    EXPECT_TRUE(isInReach({700, 300, 200, 200}, 20, {area, {800, 0, 800, 600}})) << "on two screens";
    EXPECT_EQ(movedInside({700, 700, 200, 100}, area), QRect(600, 500, 200, 100));
    EXPECT_EQ(movedInside({-50, 700, 900, 700}, area), QRect(0, 30, 900, 700)) << "larger than the screen";
    EXPECT_EQ(movedBeside({300, 400, 200, 150}, {100, 300, 500, 200}, area), QRect(300, 150, 200, 150));
    EXPECT_EQ(movedBeside({300, 400, 200, 150}, {0, 100, 800, 440}, area), QRect(300, 400, 200, 150)) << "no room";
}
