// SPDX-License-Identifier: GPL-3.0-or-later
// seeds FOLDER: makes a folder of small inputs for each fuzz target, by the program's own writers where it has them.
#include "base/CameraFrame.h"
#include "media/sound/WavFile.h"
#include "movie/HybridMp4File.h"
#include "tests/fuzz/Fuzzing.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QImageWriter>

#include <array>
#include <string_view>

using namespace lumavex;

namespace {

class SeedFolder {
public:
    SeedFolder(const QString& root, const char* target) : folder_(root + u'/' + QLatin1String(target))
    {
        require(QDir().mkpath(folder_.path()), "the folder can be made");
    }
    void add(const QString& name, const QByteArray& bytes) const
    {
        QFile file(path(name));
        require(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size(), "a seed can be written");
    }
    QString path(const QString& name) const { return folder_.filePath(name); }

private:
    QDir folder_;
};

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    require(file.open(QIODevice::ReadOnly), "a file that was written can be read");
    return file.readAll();
}

QImage smallPicture(QImage::Format format)
{
    QImage picture(17, 9, QImage::Format_ARGB32);
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            picture.setPixel(x, y, qRgba(x * 15, y * 28, x * y, 255 - x));
    return picture.convertToFormat(format);
}

enum class Scans { Baseline, Progressive };

QByteArray encoded(const char* format, QImage::Format pixels, Scans scans = Scans::Baseline)
{
    QBuffer buffer;
    QImageWriter writer(&buffer, format);
    writer.setProgressiveScanWrite(scans == Scans::Progressive);
    require(writer.write(smallPicture(pixels)), "Qt writes this kind of picture");
    return buffer.data();
}

/// A JPEG picture as many cameras send it: the Huffman tables are left out.
QByteArray withoutHuffmanTables(QByteArray jpeg)
{
    constexpr std::string_view marker("\xff\xc4", 2);
    for (qsizetype at = jpeg.indexOf(marker); at >= 0; at = jpeg.indexOf(marker)) {
        const int size = static_cast<std::uint8_t>(jpeg[at + 2]) << 8 | static_cast<std::uint8_t>(jpeg[at + 3]);
        jpeg.remove(at, size + 2);
    }
    return jpeg;
}

void makeTexts(const QString& root)
{
    const SeedFolder progress(root, "encoder_progress");
    progress.add(QStringLiteral("report"),
                 "\x05"
                 "frame=  120 fps= 30 q=-1.0 size=    1024kB time=00:00:04.00 bitrate=2097.2kbits/s speed=1x\r");
    progress.add(QStringLiteral("two"), "\x0atime=00:00:04.00 time=01:02:03.50 bitrate");
    progress.add(QStringLiteral("none"), "\x0atime=N/A bitrate=N/A speed=N/A");
    progress.add(QStringLiteral("cut"), "\x0asize= 1024kB time=00:0");
    progress.add(QStringLiteral("utf8"), "\x0a/home/\xc3\xa4/x.mov time=00:00:01.00");

    const SeedFolder line(root, "command_line");
    line.add(QStringLiteral("record"),
             "--record\n2.5\n--output\n/tmp/a.mov\n--fps=30\n--size\n1280x720\n--sound=no\n--cursor\nyes");
    line.add(QStringLiteral("region"),
             "--region=100,50,640,480\n--type\nregion\n--source\nboth-camera\n--overwrite\n--ignore-load");
    line.add(QStringLiteral("follow"), "--follow\n640x480\n--camera\nName\n--camera-size=7\n--hide-own-windows");
    line.add(QStringLiteral("window"), "--type=window\n--window\nEditor\n--when-window-goes=hold");
    line.add(QStringLiteral("lists"), "--list-cameras\n--list-windows\n--list-sizes");
    line.add(QStringLiteral("help"), "--help");

    const SeedFolder icons(root, "window_icon");
    const std::uint32_t two[] = {2, 1, 0xff102030, 0x80405060, 1, 3, 1, 2, 3, 1000, 1000, 7};
    icons.add(QStringLiteral("two"), '\x02' + QByteArray(reinterpret_cast<const char*>(two), sizeof two));

    const SeedFolder settings(root, "settings");
    settings.add(QStringLiteral("ordinary"),
                 "[General]\nOrbelkin_i_Screen_Capture_FPS_02=30\nOrbelkin_s_Camera_Name_02=\"Cam, the\"\n");
    settings.add(QStringLiteral("types"),
                 "[General]\nOrbelkin_i_Screen_Capture_FPS_02=@Invalid()\n"
                 "Orbelkin_s_Camera_Name_02=@Variant(\\0\\0\\0\\x2\\0\\0\\0\\x5)\na=@ByteArray(x)\nb=@Rect(1 2 3 4)\n"
                 "c=a, \"b\", @Size(1 2)\n");
    settings.add(QStringLiteral("picture"),
                 "[General]\nOrbelkin_s_Camera_Name_02=@Variant(\\0\\0\\0\\x46\\0\\0\\0\\x1)\n"
                 "a=@Variant(\\0\\0\\0\\x9\\0\\0\\0\\x1\\0\\0\\0\\x2\\0\\0\\0\\x1)\n");
    settings.add(QStringLiteral("escapes"),
                 "[General]\nOrbelkin_s_Camera_Name_02=\"\\x40\\n\\\\\\\"\\101 @@\"\n; remark\n%41\\b=1\n");
    settings.add(QStringLiteral("damaged"),
                 "[General\nOrbelkin_i_Screen_Capture_FPS_02=99999999999999999999\n\x01rubbish\n");
}

void makeMovies(const QString& root)
{
    const SeedFolder movies(root, "movie_repair");
    const QString path = movies.path(QStringLiteral("growing"));
    HybridMp4File file;
    const MovieTrack track{64, 48, 1};
    require(!file.create(path.toStdString(), track), "a movie can be made");
    const std::array<std::uint8_t, 5> picture{1, 2, 3, 4, 5};
    const std::array<std::span<const std::uint8_t>, 2> pictures{picture, std::span(picture).first(2)};
    const std::array<FragmentSample, 3> first{{{0, 0}, {3000, 0}, {6000, 1}}};
    const std::array<FragmentSample, 2> second{{{9000, 0}, {12000, 1}}};
    require(!file.appendFragment(first, 9000, pictures) && !file.appendFragment(second, 15000, pictures),
            "a movie can be written");
    const QByteArray growing = contentOf(path);
    const auto headSize = static_cast<qsizetype>(growingHead(track).bytes.size());
    require(!file.finish(15000), "a movie can be finished");
    const QByteArray finished = contentOf(path);
    QFile::remove(path);
    movies.add(QStringLiteral("whole"), QByteArray(1, '\0') + growing);
    movies.add(QStringLiteral("fragments"), QByteArray(1, '\1') + growing.sliced(headSize));
    movies.add(QStringLiteral("finished"), QByteArray(1, '\0') + finished);
}

void makeSounds(const QString& root)
{
    const SeedFolder sounds(root, "sound_repair");
    const auto header = [](std::uint64_t bytes) {
        const auto array = wavHeader(bytes);
        return QByteArray(reinterpret_cast<const char*>(array.data()), static_cast<qsizetype>(array.size()));
    };
    sounds.add(QStringLiteral("whole"), header(16) + QByteArray(16, 'x'));
    sounds.add(QStringLiteral("short"), header(8) + QByteArray(22, 'x'));
    sounds.add(QStringLiteral("long"), header(0xFFFFFFFF) + QByteArray(16, 'x'));
    QByteArray chunks = header(8).first(36);
    chunks += QByteArray("LIST\x03\0\0\0abc\0", 12) + QByteArray("data\x08\0\0\0", 8) + QByteArray(8, 'x');
    sounds.add(QStringLiteral("chunks"), chunks + QByteArray("INFO\x02\0\0\0ab", 10));
}

void makePictures(const QString& root)
{
    const SeedFolder pictures(root, "overlay_picture");
    const QByteArray progressive = encoded("jpg", QImage::Format_RGB32, Scans::Progressive);
    const QByteArray jpeg = encoded("jpg", QImage::Format_RGB32);
    pictures.add(QStringLiteral("png"), encoded("png", QImage::Format_ARGB32));
    pictures.add(QStringLiteral("png_palette"), encoded("png", QImage::Format_Indexed8));
    pictures.add(QStringLiteral("bmp"), encoded("bmp", QImage::Format_RGB32));
    pictures.add(QStringLiteral("bmp_mono"), encoded("bmp", QImage::Format_Mono));
    pictures.add(QStringLiteral("tiff"), encoded("tiff", QImage::Format_ARGB32));
    pictures.add(QStringLiteral("jpeg"), jpeg);
    pictures.add(QStringLiteral("jpeg_grey"), encoded("jpg", QImage::Format_Grayscale8));
    pictures.add(QStringLiteral("jpeg_progressive"), progressive);
    pictures.add(
        QStringLiteral("gif"),
        QByteArray("GIF89a\3\0\2\0\x80\0\0\xff\0\0\0\0\xff!\xf9\4\1\0\0\1\0,\0\0\0\0\3\0\2\0\0\2\3D\2\5\0;", 44));

    const SeedFolder frames(root, "camera_frame");
    const auto head = [](CameraPixels pixels, int variant, const QSize& size, const QSize& picture) {
        QByteArray bytes;
        for (const int value : {int(pixels), variant, size.width(), size.height(), picture.width(), picture.height()})
            bytes += static_cast<char>(value);
        return bytes;
    };
    frames.add(QStringLiteral("jpeg"), head(CameraPixels::Mjpeg, 32, {}, {}) + jpeg);
    frames.add(QStringLiteral("jpeg_small"), head(CameraPixels::Mjpeg, 0, {}, {4, 3}) + progressive);
    frames.add(QStringLiteral("jpeg_tables"), head(CameraPixels::Mjpeg, 0, {}, {16, 9}) + withoutHuffmanTables(jpeg));
    int variant = 0;
    for (const auto pixels : {CameraPixels::Yuy2, CameraPixels::Nv12, CameraPixels::I420, CameraPixels::Bgrx})
        for (const QSize size : {QSize(16, 8), QSize(33, 17), QSize(1, 1), QSize(255, 3)}) {
            variant = (variant + 11) % 64;
            frames.add(QStringLiteral("raw_%1_%2").arg(int(pixels)).arg(size.width()),
                       head(pixels, variant, size, size / 3) + QByteArray(64, '\x9c'));
        }
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QString root = application.arguments().value(1);
    require(!root.isEmpty(), "usage: seeds FOLDER");
    makeTexts(root);
    makeMovies(root);
    makeSounds(root);
    makePictures(root);
    return 0;
}
