// SPDX-License-Identifier: GPL-3.0-or-later
// How like the source the movie's pictures are, and at what size, against the encoder that others record with.
#include "tests/unit/platform_movie/MovieTools.h"

#include "platform/movie/JpegMovieWriter.h"
#include "platform/movie/JpegRowCoder.h"

#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace lumavex {
namespace {

constexpr int kWidth = 1280;
constexpr int kHeight = 720;

int clamped(double value)
{
    return static_cast<int>(std::clamp(value, 0.0, 255.0));
}

/// Windows, dark and light, with lines of what is as thin as letters are.
QImage text(int /*frame*/)
{
    QImage picture(kWidth, kHeight, QImage::Format_RGB32);
    picture.fill(qRgb(59, 110, 165));
    std::mt19937 random(1);
    for (const int left : {30, 660}) {
        const QRgb paper = left == 30 ? qRgb(255, 255, 255) : qRgb(30, 30, 30);
        const QRgb ink = left == 30 ? qRgb(34, 34, 34) : qRgb(156, 220, 254);
        for (int y = 40; y < kHeight - 40; ++y) {
            for (int x = left; x < left + 590; ++x)
                picture.setPixel(x, y, paper);
        }
        for (int line = 60; line < kHeight - 60; line += 17) {
            const int end = left + 20 + static_cast<int>(random() % 560);
            for (int letter = left + 10; letter < end; letter += random() % 6 ? 8 : 14) {
                for (int stroke = 0; stroke < 3; ++stroke) {
                    const int x = letter + static_cast<int>(random() % 6);
                    const int y = line + static_cast<int>(random() % 8);
                    for (int i = 0; i < 5; ++i)
                        picture.setPixel(stroke % 2 ? x : x - x % 8 + 3 + i % 3, stroke % 2 ? y - i : y, ink);
                }
            }
        }
    }
    return picture;
}

/// Soft shapes that move.
QImage scene(int frame)
{
    QImage picture(kWidth, kHeight, QImage::Format_RGB32);
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            const double wave = std::sin((x + 9 * frame) / 37.0) + std::cos((y - 5 * frame) / 23.0);
            const bool inside = std::hypot(x - 400 - 20 * frame, y - 300) < 200;
            const double level = inside ? 210 + 20 * wave : 110 + 45 * wave;
            picture.setPixel(x, y, qRgb(clamped(level), clamped(level * 0.8 + y / 12.0), clamped(230 - level / 2)));
        }
    }
    return picture;
}

/// Gradients with the grain of a camera.
QImage photograph(int frame)
{
    QImage picture = scene(frame);
    std::mt19937 random(2);
    std::normal_distribution grain(0.0, 5.0);
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            const QRgb p = picture.pixel(x, y);
            const double g = grain(random);
            picture.setPixel(x, y, qRgb(clamped(qRed(p) + g), clamped(qGreen(p) + g), clamped(qBlue(p) + g)));
        }
    }
    return picture;
}

struct Scene {
    const char* name;
    QImage (*draw)(int frame);
    double mostBytes;     ///< of theirs
    double mostByLibrary; ///< where the rows are not ours
};

class Likeness : public testing::TestWithParam<Scene> {
protected:
    static constexpr int kFrames = 3;

    struct Measured {
        double psnr = 0;
        double ssim = 0;
        double bytes = 0; ///< a frame
    };

    void SetUp() override
    {
        QByteArray bytes;
        for (int frame = 0; frame < kFrames; ++frame) {
            pictures_.push_back(GetParam().draw(frame));
            bytes.append(reinterpret_cast<const char*>(pictures_.back().constBits()), pictures_.back().sizeInBytes());
        }
        writeContent(source_, bytes);
    }
    QStringList sourceArguments() const
    {
        return {QStringLiteral("-f"),       QStringLiteral("rawvideo"),
                QStringLiteral("-pix_fmt"), QStringLiteral("bgra"),
                QStringLiteral("-s"),       QStringLiteral("%1x%2").arg(kWidth).arg(kHeight),
                QStringLiteral("-r"),       QStringLiteral("30"),
                QStringLiteral("-i"),       source_};
    }

    Measured measure(const QString& movie) const
    {
        Measured measured;
        const auto decoded = picturesOf(movie, kWidth, kHeight);
        for (std::size_t i = 0; i < decoded.size(); ++i)
            measured.psnr += psnrOf(decoded[i], pictures_[i]) / kFrames;
        for (const Packet& packet : packetsOf(movie))
            measured.bytes += static_cast<double>(packet.size) / kFrames;
        const QString filter = QStringLiteral("[0:v]settb=1/30,setpts=N,format=gbrp[a];"
                                              "[1:v]settb=1/30,setpts=N,format=gbrp[b];[a][b]ssim");
        const auto ssim =
            runProgram(QStringLiteral("ffmpeg"),
                       QStringList{QStringLiteral("-hide_banner"), QStringLiteral("-i"), movie} + sourceArguments()
                           + QStringList{QStringLiteral("-lavfi"), filter, QStringLiteral("-f"), QStringLiteral("null"),
                                         QStringLiteral("-")});
        static const QRegularExpression all(QStringLiteral("SSIM .*All:([0-9.]+)"));
        measured.ssim = all.match(QString::fromUtf8(ssim.errors)).captured(1).toDouble();
        return measured;
    }

    QTemporaryDir folder_;
    const QString source_ = folder_.filePath(QStringLiteral("source.raw"));
    std::vector<QImage> pictures_;
};

TEST_P(Likeness, IsNoLessThanTheirs)
{
    const QString theirs = folder_.filePath(QStringLiteral("theirs.mov"));
    ASSERT_EQ(runProgram(QStringLiteral("ffmpeg"),
                         QStringList{QStringLiteral("-v"), QStringLiteral("error")} + sourceArguments()
                             + QStringList{QStringLiteral("-c:v"), QStringLiteral("mjpeg"), QStringLiteral("-q:v"),
                                           QStringLiteral("3"), QStringLiteral("-pix_fmt"), QStringLiteral("yuvj420p"),
                                           theirs})
                  .exitCode,
              0);
    const QString ours = folder_.filePath(QStringLiteral("ours.mov"));
    const auto writer = createJpegMovieWriter(ours, {kWidth, kHeight});
    ASSERT_EQ(writer->startWriting(), QString());
    for (int frame = 0; frame < kFrames; ++frame)
        ASSERT_TRUE(appendWhenReady(*writer, pixelBufferOf(pictures_[static_cast<std::size_t>(frame)]),
                                    CMTimeMake(frame + 1, 30)));
    ASSERT_EQ(finishAndWait(*writer, CMTimeMake(kFrames + 1, 30)).error, QString());

    const Measured their = measure(theirs);
    const Measured our = measure(ours);
    EXPECT_GE(our.psnr, their.psnr);
    EXPECT_GE(our.ssim, their.ssim - 0.001);
    EXPECT_LE(our.bytes, (JpegRowCoder::isUsable() ? GetParam().mostBytes : GetParam().mostByLibrary) * their.bytes);
    RecordProperty("ratio", QString::number(our.bytes / their.bytes).toStdString());
    RecordProperty("psnr", QStringLiteral("%1 %2").arg(our.psnr).arg(their.psnr).toStdString());
    RecordProperty("ssim", QStringLiteral("%1 %2").arg(our.ssim).arg(their.ssim).toStdString());
}

INSTANTIATE_TEST_SUITE_P(Contents, Likeness,
                         testing::Values(Scene{"Text", text, 1.09, 1.12}, Scene{"Scene", scene, 1.19, 1.25},
                                         Scene{"Photograph", photograph, 1.37, 1.55}),
                         [](const auto& instance) { return instance.param.name; });

} // namespace
} // namespace lumavex
