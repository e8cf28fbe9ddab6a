// SPDX-License-Identifier: GPL-3.0-or-later
#include "capture/Window_FollowCursor_How_It_Works.h"
#include "capture/Window_Region_How_It_Works.h"
#include "capture/Window_WindowExclusive_How_It_Works.h"

#include <QApplication>
#include <QCheckBox>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QTimer>

#include <gtest/gtest.h>

#include <vector>

using namespace lumavex;

namespace {

/// Action of the user in the open guide.
using Deed = void (*)(QDialog& guide);

void tick(QDialog& guide)
{
    guide.findChild<QCheckBox*>(QStringLiteral("checkDontShowAgain"))->click();
}

void tickHold(QDialog& guide)
{
    guide.findChild<QCheckBox*>(QStringLiteral("checkHoldPicture"))->click();
}

void pressOK(QDialog& guide)
{
    guide.findChild<QPushButton*>(QStringLiteral("buttonOK"))->click();
}

void pressKey(QDialog& guide, Qt::Key key)
{
    QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
    QApplication::sendEvent(&guide, &event);
}

template <typename Guide>
class ModeGuides : public testing::Test {
protected:
    /// How often the guide asked to be turned off.
    int outcomeOf(Deed deed)
    {
        int stops = 0;
        Guide guide([&stops] { ++stops; });
        QTimer::singleShot(0, &guide, [&guide, deed] {
            EXPECT_EQ(QApplication::activeModalWidget(), &guide);
            deed(guide);
        });
        EXPECT_EQ(guide.runModal(), 1);
        EXPECT_FALSE(guide.isVisible());
        return stops;
    }
};

using Guides =
    testing::Types<Window_Region_How_It_Works, Window_FollowCursor_How_It_Works, Window_WindowExclusive_How_It_Works>;
TYPED_TEST_SUITE(ModeGuides, Guides);

} // namespace

TYPED_TEST(ModeGuides, AreTurnedOffByTickAndOKAlone)
{
    const std::pair<Deed, int> deeds[] = {
        {[](QDialog& guide) { tick(guide), pressOK(guide); }, 1},
        {[](QDialog& guide) { pressOK(guide); }, 0},
        {[](QDialog& guide) { tick(guide), tick(guide), pressOK(guide); }, 0},
        {[](QDialog& guide) { tick(guide), guide.close(); }, 0},
        {[](QDialog& guide) { tick(guide), pressKey(guide, Qt::Key_Escape); }, 0},
    };
    for (const auto& [deed, stops] : deeds)
        EXPECT_EQ(this->outcomeOf(deed), stops);
}

TYPED_TEST(ModeGuides, ShowTheirPictureAndTakeReturn)
{
    EXPECT_EQ(this->outcomeOf([](QDialog& guide) {
        // A picture that cannot be read or drawn would leave its place empty.
        const QImage picture = guide.findChild<QWidget*>(QStringLiteral("picture"))->grab().toImage();
        EXPECT_NE(picture.pixel(picture.width() / 2, picture.height() / 2), picture.pixel(0, 0));
        for (const QLabel* label : guide.findChildren<QLabel*>())
            EXPECT_GE(label->height(), label->heightForWidth(label->width())) << qUtf8Printable(label->objectName());
        pressKey(guide, Qt::Key_Return);
    }),
              0);
}

TEST(WindowGuide, ItsSecondBoxChoosesByOKAloneAndWhenItWasChanged)
{
    const auto choiceOf = [](bool before, Deed deed) {
        std::vector<bool> chosen;
        Window_WindowExclusive_How_It_Works guide([] {}, before, [&](bool hold) { chosen.push_back(hold); });
        QTimer::singleShot(0, &guide, [&guide, deed] { deed(guide); });
        guide.runModal();
        return chosen;
    };
    EXPECT_EQ(choiceOf(false, [](QDialog& guide) { pressOK(guide); }), std::vector<bool>());
    EXPECT_EQ(choiceOf(false, [](QDialog& guide) { tickHold(guide), pressOK(guide); }), std::vector{true});
    EXPECT_EQ(choiceOf(true, [](QDialog& guide) { tickHold(guide), pressOK(guide); }), std::vector{false});
    EXPECT_EQ(choiceOf(true, [](QDialog& guide) { tickHold(guide), guide.close(); }), std::vector<bool>());
}
