// SPDX-License-Identifier: GPL-3.0-or-later
#include "recording/Window_Progress.h"

#include <QProgressBar>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

namespace lumavex {
namespace {

TEST(WindowProgress, OnlyTheProgramClosesIt)
{
    QWidget mainWindow;
    Window_Progress sheet(&mainWindow);
    mainWindow.show();
    sheet.show();
    QTest::keyClick(&sheet, Qt::Key_Escape);
    EXPECT_TRUE(sheet.isVisible());
    EXPECT_FALSE(sheet.close());
    EXPECT_TRUE(sheet.isVisible());
    EXPECT_EQ(sheet.windowModality(), Qt::WindowModal);
    EXPECT_FALSE(sheet.windowFlags() & Qt::WindowCloseButtonHint);
    sheet.hide();
    EXPECT_FALSE(sheet.isVisible());
}

TEST(WindowProgress, CancelIsThereWhereItHelpsAndAsksOnce)
{
    Window_Progress sheet(nullptr);
    sheet.show();
    auto* button = sheet.findChild<QPushButton*>("btnCancel");
    ASSERT_TRUE(button);
    EXPECT_FALSE(button->isVisible());
    int asked = 0;
    QObject::connect(&sheet, &Window_Progress::cancelled, [&asked] { ++asked; });
    sheet.setCancelling(Window_Progress::Cancelling::Offered);
    EXPECT_TRUE(button->isVisible());
    QTest::keyClick(&sheet, Qt::Key_Return); // held down from the last question, say
    EXPECT_EQ(asked, 0);
    button->click();
    button->click();
    EXPECT_EQ(asked, 1);
    EXPECT_TRUE(sheet.isVisible()) << "the program takes it away";
}

} // namespace
} // namespace lumavex
