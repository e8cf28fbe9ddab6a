// SPDX-License-Identifier: GPL-3.0-or-later
#include <QDirIterator>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QRegularExpression>
#include <QSvgRenderer>

#include <gtest/gtest.h>

#include <set>

namespace {

QByteArray contentsOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

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
        const QByteArray source = contentsOf(path);
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

TEST(MouseCursor, HasItsTipInTheLowerLeftPixelAndIsSeenOnBlackAndOnWhite)
{
    const QImage cursor = QImage(QStringLiteral(":/images/mousecursor.png")).convertToFormat(QImage::Format_ARGB32);
    ASSERT_EQ(cursor.size(), QSize(16, 16));
    EXPECT_EQ(qAlpha(cursor.pixel(0, 15)), 255);
    EXPECT_EQ(qAlpha(cursor.pixel(15, 15)), 0);
    EXPECT_EQ(qAlpha(cursor.pixel(0, 0)), 0);
    int black = 0;
    int white = 0;
    for (int y = 0; y < 16; ++y) {
        for (int x = 0; x < 16; ++x) {
            black += cursor.pixel(x, y) == qRgb(0, 0, 0);
            white += cursor.pixel(x, y) == qRgb(255, 255, 255);
        }
    }
    EXPECT_GT(black, 30);
    EXPECT_GT(white, 30);
}

TEST(SelectImage, LetsThePictureBelowShineThrough)
{
    const QImage picture(QStringLiteral(":/images/SelectImage.png"));
    ASSERT_FALSE(picture.isNull());
    const int alpha = qAlpha(picture.pixel(picture.width() / 10, picture.height() / 2));
    EXPECT_GT(alpha, 60);
    EXPECT_LT(alpha, 220);
}

} // namespace
