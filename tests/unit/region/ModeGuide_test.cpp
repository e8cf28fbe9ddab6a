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

using namespace lumavex;

namespace {

/// What the user does with the guide that is open.
using Deed = void (*)(QDialog& guide);

void tick(QDialog& guide)
{
    guide.findChild<QCheckBox*>(QStringLiteral("checkDontShowAgain"))->click();
}

void pressOK(QDialog& guide)
{
    guide.findChild<QPushButton*>(QStringLiteral("buttonOK"))->click();
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
    EXPECT_EQ(this->outcomeOf([](QDialog& guide) {
        tick(guide);
        pressOK(guide);
    }),
              1);
    EXPECT_EQ(this->outcomeOf([](QDialog& guide) { pressOK(guide); }), 0);
    EXPECT_EQ(this->outcomeOf([](QDialog& guide) {
        tick(guide);
        tick(guide);
        pressOK(guide);
    }),
              0);
}

TYPED_TEST(ModeGuides, StayOnWhenClosedOtherwise)
{
    EXPECT_EQ(this->outcomeOf([](QDialog& guide) {
        tick(guide);
        guide.close();
    }),
              0);
    EXPECT_EQ(this->outcomeOf([](QDialog& guide) {
        tick(guide);
        QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
        QApplication::sendEvent(&guide, &escape);
    }),
              0);
}

TYPED_TEST(ModeGuides, ShowTheirPictureAndTakeReturn)
{
    EXPECT_EQ(this->outcomeOf([](QDialog& guide) {
        // A picture that cannot be read or drawn would leave its place empty.
        const QImage picture = guide.findChild<QWidget*>(QStringLiteral("picture"))->grab().toImage();
        EXPECT_NE(picture.pixel(picture.width() / 2, picture.height() / 2), picture.pixel(0, 0));
        for (const QLabel* label : guide.findChildren<QLabel*>())
            EXPECT_GE(label->height(), label->heightForWidth(label->width())) << qUtf8Printable(label->objectName());
        QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
        QApplication::sendEvent(&guide, &enter);
    }),
              0);
}
