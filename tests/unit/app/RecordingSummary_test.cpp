// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/RecordingSummary.h"

#include <QApplication>
#include <QLabel>

#include <gtest/gtest.h>

namespace lumavex {
namespace {

QString labels(const RecordingSummary& summary)
{
    QStringList texts;
    for (const QLabel* label : summary.findChildren<QLabel*>())
        texts.append(label->text());
    return texts.join(u'|');
}

TEST(RecordingSummary, IsLaidOutWhenItIsSeenAndThenAtOnce)
{
    RecordingSummary summary;
    int rooms = 0;
    QObject::connect(&summary, &RecordingSummary::roomChanged, [&rooms] { ++rooms; });
    SummaryFacts facts{.picture = QStringLiteral("Entire screen"),
                       .width = 640,
                       .height = 480,
                       .rate = 30,
                       .sound = true,
                       .frames = {}};
    summary.show(facts);
    EXPECT_EQ(rooms, 0) << "the window is not there yet";

    summary.setVisible(true);
    QCoreApplication::processEvents();
    EXPECT_TRUE(labels(summary).contains(QStringLiteral("Entire screen"))) << labels(summary).toStdString();
    EXPECT_EQ(summary.accessibleName(), summary.text());
    EXPECT_EQ(rooms, 1);

    facts.frames = 12;
    summary.show(facts);
    EXPECT_TRUE(labels(summary).endsWith(QStringLiteral("12 frames"))) << labels(summary).toStdString();

    summary.setVisible(false);
    facts.picture = QStringLiteral("Camera");
    summary.show(facts);
    summary.setVisible(true);
    QCoreApplication::processEvents();
    EXPECT_TRUE(labels(summary).contains(QStringLiteral("Camera"))) << labels(summary).toStdString();
}

} // namespace
} // namespace lumavex
