// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/PictureFile.h"
#include "tests/support/contentOf.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace lumavex {
namespace {

class PictureFile : public testing::Test {
protected:
    QString write(const char* name, const QByteArray& bytes)
    {
        const QString path = folder_.filePath(QLatin1String(name));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        return path;
    }
    QString save(const char* name, const char* format)
    {
        QImage picture(7, 5, QImage::Format_RGB32);
        picture.fill(Qt::red);
        const QString path = folder_.filePath(QLatin1String(name));
        EXPECT_TRUE(picture.save(path, format)) << format;
        return path;
    }
    QTemporaryDir folder_;
};

TEST_F(PictureFile, EveryKindIsReadWhateverItsName)
{
    EXPECT_EQ(readPictureFile(save("picture.gif", "tiff")).size(), QSize(7, 5));
    const QByteArray gif("GIF89a\3\0\2\0\x80\0\0\xff\0\0\0\0\xff,\0\0\0\0\3\0\2\0\0\2\3D\2\5\0;", 36);
    EXPECT_EQ(readPictureFile(write("picture.bmp", gif)).size(), QSize(3, 2));
}

TEST_F(PictureFile, OtherKindsAndOtherThingsThanFilesGiveNone)
{
    const QByteArray drawing("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"9\" height=\"9\"/>");
    EXPECT_TRUE(readPictureFile(write("drawing.png", drawing)).isNull());
    EXPECT_TRUE(readPictureFile(save("other.png", "xpm")).isNull());
    EXPECT_TRUE(readPictureFile(write("empty.png", {})).isNull());
    EXPECT_TRUE(readPictureFile(write("cut.png", contentOf(save("whole.png", "png")).first(20))).isNull());
    EXPECT_TRUE(readPictureFile(folder_.path()).isNull());
    EXPECT_TRUE(readPictureFile(folder_.filePath(QStringLiteral("missing.png"))).isNull());
    const QString pipe = folder_.filePath(QStringLiteral("pipe.png"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    EXPECT_TRUE(readPictureFile(pipe).isNull()); // and does not wait for a writer
}

TEST_F(PictureFile, APictureThatAsksForTooMuchIsRefused)
{
    // The sizes in the heads of small files.
    QByteArray bmp = contentOf(save("a.bmp", "bmp"));
    bmp.replace(18, 8, QByteArray("\x00\x40\x00\x00\x00\x40\x00\x00", 8)); // 16384 each
    EXPECT_TRUE(readPictureFile(write("a.bmp", bmp)).isNull());

    QByteArray gif("GIF89a\xff\xff\xff\xff\x80\0\0\xff\0\0\0\0\xff,\0\0\0\0\xff\xff\xff\xff\0\2\3D\2\5\0;", 36);
    EXPECT_TRUE(readPictureFile(write("a.gif", gif)).isNull());

    QByteArray jpeg = contentOf(save("a.jpg", "jpg"));
    jpeg.replace(jpeg.indexOf("\xff\xc0") + 5, 4, "\x7f\xf0\x7f\xf0", 4);
    EXPECT_TRUE(readPictureFile(write("a.jpg", jpeg)).isNull());
}

} // namespace
} // namespace lumavex
