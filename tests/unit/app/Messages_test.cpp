// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/MessageRow.h"
#include "app/MessageStrip.h"
#include "app/MoreSettings.h"
#include "platform/fake/FakeUserDefaults.h"

#include <QPushButton>
#include <QtTest/QTest>

#include <gtest/gtest.h>

using namespace lumavex;

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
    strip.add(MessageTopic::Load, {QStringLiteral("e ").repeated(200)});
    EXPECT_GT(strip.heightForWidth(300), strip.heightForWidth(3000)) << "the window makes room for the text";
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
