// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/contentOf.h"

#include <QDirIterator>
#include <QImage>
#include <QPainter>
#include <QRegularExpression>
#include <QSvgRenderer>

#include <gtest/gtest.h>

#include <set>

namespace {

// An icon that Qt cannot draw shows as an empty button, and a colour that is neither the placeholder nor the accent
// disappears on a dark or a light theme.
TEST(Icons, DrawSomethingAndUseOnlyColoursThatCanBeAdapted)
{
    static const QRegularExpression colour(QStringLiteral("#[0-9a-fA-F]{3,8}"));
    const std::set<QString> allowed{QStringLiteral("#000000"), QStringLiteral("#e5484d")};
    int seen = 0;
    for (QDirIterator icons(QStringLiteral(":/icons")); icons.hasNext();) {
        const QString path = icons.next();
        SCOPED_TRACE(path.toStdString());
        const QByteArray source = lumavex::contentOf(path);
        QSvgRenderer renderer(source);
        ASSERT_TRUE(renderer.isValid());
        QImage picture(24, 24, QImage::Format_ARGB32_Premultiplied);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        renderer.render(&painter);
        painter.end();
        QImage empty(picture.size(), picture.format());
        empty.fill(Qt::transparent);
        EXPECT_NE(picture, empty);
        ++seen;
        if (path.contains(QLatin1String("org.lumavex"))) {
            continue;
        }
        EXPECT_EQ(renderer.defaultSize(), QSize(24, 24));
        for (auto match = colour.globalMatch(QString::fromUtf8(source)); match.hasNext();) {
            const QString found = match.next().captured();
            EXPECT_TRUE(allowed.contains(found)) << found.toStdString();
        }
    }
    EXPECT_GE(seen, 20);
}

} // namespace
