// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/MessageRow.h"
#include "app/MessageStrip.h"
#include "app/MoreSettings.h"
#include "app/SettingsNotice.h"
#include "tests/unit/app/Program.h"

#include <QAction>
#include <QMenu>
#include <QPushButton>
#include <QtTest/QTest>

#include <gtest/gtest.h>

using namespace lumavex;
using namespace std::chrono_literals;

TEST(MessageStrip, EachTopicHasOneMessageAndTheNewestThreeAreShown)
{
    MessageStrip strip;
    const auto shown = [&strip] {
        QStringList texts;
        for (const MessageRow* row : strip.findChildren<MessageRow*>())
            if (!row->isHidden())
                texts.append(row->text());
        texts.sort();
        return texts.join(u' ');
    };
    strip.add(MessageTopic::Sound, {QStringLiteral("a")});
    strip.add(MessageTopic::Camera, {QStringLiteral("b")});
    strip.add(MessageTopic::Sound, {QStringLiteral("c")});
    EXPECT_EQ(shown(), QStringLiteral("b c"));
    strip.add(MessageTopic::Rate, {QStringLiteral("d")});
    strip.add(MessageTopic::Load, {QStringLiteral("e")});
    EXPECT_EQ(shown(), QStringLiteral("c d e"));
    strip.add(MessageTopic::Load,
              {QStringLiteral("e ").repeated(200), {{QStringLiteral("f"), {}}, {QStringLiteral("g"), {}}}});
    const auto lines = [&strip](int width) { return strip.heightForWidth(width) / strip.fontMetrics().height(); };
    EXPECT_GT(lines(400), lines(3000)) << "the window makes room for the text";
    strip.resize(200, strip.heightForWidth(200));
    strip.show();
    for (const QPushButton* button : strip.findChildren<QPushButton*>())
        EXPECT_TRUE(button->parentWidget()->rect().contains(button->geometry())) << "no button is cut";
    strip.withdraw(MessageTopic::Load);
    strip.withdraw(MessageTopic::Screen);
    EXPECT_EQ(shown(), QStringLiteral("b c d"));
    EXPECT_EQ(strip.newestText(), QStringLiteral("d"));
    strip.clear();
    EXPECT_TRUE(strip.isHidden());
}

TEST(MessageStrip, AnActionChosenByKeyboardRunsOnceAndLeavesTheFocusNowhere)
{
    QWidget window;
    auto* record = new QPushButton(&window);
    auto* strip = new MessageStrip(&window);
    int runs = 0;
    strip->add(MessageTopic::Camera, {QStringLiteral("a"), {{QStringLiteral("Use It"), [&] {
                                                                 ++runs;
                                                                 strip->add(MessageTopic::Sound, {QStringLiteral("b")});
                                                             }}}});
    window.show();
    strip->takeFocus();
    auto* button = qobject_cast<QPushButton*>(window.focusWidget());
    ASSERT_NE(button, nullptr);
    EXPECT_EQ(button->text(), QStringLiteral("Use It"));
    QTest::keyClick(button, Qt::Key_Space);
    QTest::keyClick(button, Qt::Key_Space); // before the first one was carried out
    QTest::qWait(1);
    EXPECT_EQ(runs, 1);
    EXPECT_EQ(strip->newestText(), QStringLiteral("b"));
    EXPECT_NE(window.focusWidget(), record);
}

TEST_F(Program, TroubleWithSettingsIsToldOnceAndGoesAndAFirstRunsSettingsReplaceUnreadOnes)
{
    ASSERT_TRUE(launch());
    SettingsNotice notice(*app, *window, *store, *more);
    const auto says = [this](const QString& text) { return messages().text(MessageTopic::Settings) == text; };
    more->unstored = QStringLiteral("Full.");
    notice.written();
    EXPECT_TRUE(says(more->unstored));
    window->withdrawMessage(MessageTopic::Settings); // as the user does
    notice.written();
    EXPECT_TRUE(says({})) << "told once";
    more->unstored.clear();
    notice.written();
    store->unstored = QStringLiteral("Read-only.");
    notice.written();
    EXPECT_TRUE(says(store->unstored));
    store->unstored.clear();
    notice.written();
    EXPECT_TRUE(says({}));

    app->storeInteger("b_Record_Include_Audio", 0);
    app->recording.b_Record_Include_Audio = 0;
    app->MenuFollowCursorFrameClick(window->submenuFollowCursorFrame->actions().at(0));
    store->unread = QStringLiteral("Unread.");
    more->unread = QStringLiteral("Choices, too.");
    notice.tellUnread();
    EXPECT_TRUE(says(QStringLiteral("Unread. Choices, too.")));
    more->unread.clear(); // by the next choice
    notice.written();
    const auto choose = [this] {
        messages().findChildren<QPushButton*>().constLast()->click();
        QTest::qWait(1);
    };
    window->btnRecord->trigger();
    choose();
    EXPECT_TRUE(says(store->unread)) << "not during a recording";
    EXPECT_EQ(app->recording.b_Record_Include_Audio, 0);
    window->btnStop->trigger();
    choose();
    EXPECT_TRUE(says({}));
    EXPECT_EQ(app->recording.b_Record_Include_Audio, 1);
    EXPECT_EQ(store->texts.value(QStringLiteral("Orbelkin_b_Record_Include_Audio_02")), QStringLiteral("1"));
    EXPECT_TRUE(window->submenuFollowCursorFrame->actions().at(3)->isChecked());
}

TEST_F(Program, WhatBefellARecordingIsSummedUpAndItsMessagesGo)
{
    ASSERT_TRUE(launch());
    app->tell(MessageTopic::Sound, {QStringLiteral("of the recording before")});
    app->OnToolbarRecord();
    EXPECT_EQ(message(), QString());
    const auto tellSound = [this](SoundEvent event) { sound->recordings.back()->onEvent(event, {}); };
    loop->advance(2500ms);
    tellSound(SoundEvent::Lost);
    loop->advance(4s);
    app->OnToolbarPause();
    loop->advance(60s);
    app->OnToolbarRecord();
    loop->advance(3s);
    tellSound(SoundEvent::Back);
    loop->advance(1s);
    dialogs->savePaths = {home.filePath(QStringLiteral("saved.mov"))};
    app->OnToolbarStop();
    EXPECT_EQ(messages().text(MessageTopic::Sound), QString());
    EXPECT_EQ(message(), QStringLiteral("7 s without sound from 0:03 on.")) << "at one frame a second";
}

TEST(MoreSettings, AnUnknownWordIsNoChoiceAndStaysStored)
{
    FakeUserDefaults store;
    MoreSettings settings(store);
    EXPECT_EQ(settings[choices::whenWindowGoes], WhenWindowGoes::Others);
    store.texts.insert(QStringLiteral("when_window_goes"), QStringLiteral("vanish"));
    EXPECT_EQ(settings[choices::whenWindowGoes], WhenWindowGoes::Others);
    EXPECT_TRUE(store.written.isEmpty());
    settings.choose(choices::whenWindowGoes, WhenWindowGoes::Hold);
    EXPECT_EQ(store.texts.value(QStringLiteral("when_window_goes")), QStringLiteral("hold"));
    EXPECT_EQ(settings[choices::whenWindowGoes], WhenWindowGoes::Hold);
}
