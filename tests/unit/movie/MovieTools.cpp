// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/unit/movie/MovieTools.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <future>
#include <sys/wait.h>
#include <thread>

namespace lumavex {

// Not QProcess: it forks in a way that thread sanitizers take for races in this process.
ProgramResult runProgram(const QString& program, const QStringList& arguments)
{
    const QTemporaryDir folder;
    const QString output = folder.filePath(QStringLiteral("output"));
    const QString errors = folder.filePath(QStringLiteral("errors"));
    QString command = QStringLiteral("timeout 60 ") + program;
    for (const QString& argument : arguments)
        command += QStringLiteral(" '") + argument + u'\'';
    command += QStringLiteral(" </dev/null >") + output + QStringLiteral(" 2>") + errors;
    const int status = std::system(QFile::encodeName(command).constData());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, contentOf(output), contentOf(errors)};
}

static ProgramResult runLine(const char* line, const QString& path)
{
    const QStringList words = QString::fromLatin1(line).arg(path).split(u' ');
    return runProgram(words.front(), words.sliced(1));
}

QString ratesOf(const QString& path)
{
    const auto result = runProgram(QStringLiteral("ffprobe"),
                                   {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-select_streams"),
                                    QStringLiteral("v"), QStringLiteral("-show_entries"),
                                    QStringLiteral("stream=avg_frame_rate,r_frame_rate"), QStringLiteral("-of"),
                                    QStringLiteral("default=nk=1:nw=1"), path});
    return QString::fromUtf8(result.output.simplified());
}

std::vector<Packet> packetsOf(const QString& path)
{
    const auto result =
        runLine("ffprobe -v error -select_streams v -show_entries packet=pts,duration,size -of csv=p=0 %1", path);
    std::vector<Packet> packets;
    for (const QByteArray& line : result.output.split('\n')) {
        const QList<QByteArray> fields = line.split(',');
        if (fields.size() >= 3)
            packets.push_back({fields[0].toLongLong(), fields[1].toLongLong(), fields[2].toLongLong()});
    }
    return packets;
}

std::vector<std::int64_t> gstreamerTimesOf(const QString& path)
{
    const auto result = runLine("gst-launch-1.0 -v filesrc location=%1 ! qtdemux name=d d.video_0 ! jpegdec ! "
                                "fakesink silent=false",
                                path);
    std::vector<std::int64_t> times;
    static const QRegularExpression chain(QStringLiteral("chain\\s+\\*+.*?pts: (\\d+):(\\d+):(\\d+)\\.(\\d{9})"));
    auto matches = chain.globalMatch(QString::fromUtf8(result.output));
    while (matches.hasNext()) {
        const auto match = matches.next();
        const std::int64_t minutes = match.captured(1).toLongLong() * 60 + match.captured(2).toLongLong();
        times.push_back((minutes * 60 + match.captured(3).toLongLong()) * 1000000000 + match.captured(4).toLongLong());
    }
    return times;
}

int framesDecodedFrom(const QString& path)
{
    const auto result = runLine("ffmpeg -v error -i %1 -map 0:v -fps_mode passthrough -f framecrc -", path);
    if (result.exitCode != 0 || !result.errors.isEmpty())
        return -1;
    int frames = 0;
    for (const QByteArray& line : result.output.split('\n'))
        frames += !line.isEmpty() && !line.startsWith('#');
    return frames;
}

std::vector<QImage> picturesOf(const QString& path, int width, int height)
{
    const auto result = runLine("ffmpeg -v error -i %1 -fps_mode passthrough -f rawvideo -pix_fmt bgra -sws_flags "
                                "accurate_rnd+full_chroma_int+bicubic -",
                                path);
    std::vector<QImage> pictures;
    const qsizetype size = qsizetype{4} * width * height;
    for (qsizetype at = 0; at + size <= result.output.size(); at += size) {
        QImage picture(width, height, QImage::Format_RGB32);
        std::memcpy(picture.bits(), result.output.constData() + at, static_cast<std::size_t>(size));
        pictures.push_back(picture);
    }
    return pictures;
}

CVPixelBufferRef pixelBufferOf(const QImage& picture)
{
    const int rowBytes = 4 * picture.width();
    auto* const bytes =
        new std::uint8_t[static_cast<std::size_t>(rowBytes) * static_cast<std::size_t>(picture.height())];
    std::uint8_t* to = bytes;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x, to += 4) {
            const QRgb pixel = picture.pixel(x, y);
            to[0] = 255;
            to[1] = static_cast<std::uint8_t>(qRed(pixel));
            to[2] = static_cast<std::uint8_t>(qGreen(pixel));
            to[3] = static_cast<std::uint8_t>(qBlue(pixel));
        }
    }
    return std::make_shared<CVPixelBuffer>(
        picture.width(), picture.height(), kCVPixelFormatType_32ARGB, bytes, rowBytes,
        [](void*, const void* address) { delete[] static_cast<const std::uint8_t*>(address); }, nullptr);
}

QImage testPicture(int width, int height, int seed)
{
    QImage picture(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const bool inBlock = (x / 32 + y / 32 + seed) % 3 == 0;
            picture.setPixel(x, y,
                             inBlock ? qRgb(230, 230, 230)
                                     : qRgb((x + 40 * seed) * 255 / (width + 40 * seed), y * 255 / height, 90));
        }
    }
    return picture;
}

double psnrOf(const QImage& a, const QImage& b)
{
    double sum = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            sum +=
                std::pow(qRed(p) - qRed(q), 2) + std::pow(qGreen(p) - qGreen(q), 2) + std::pow(qBlue(p) - qBlue(q), 2);
        }
    }
    return 10 * std::log10(255.0 * 255.0 * 3 * a.width() * a.height() / std::max(sum, 1.0));
}

void writeContent(const QString& path, const QByteArray& content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write a test file");
}

MovieWriter::Result finishAndWait(MovieWriter& writer, CMTime end)
{
    const auto result = std::make_shared<std::promise<MovieWriter::Result>>(); // outlives the handler's call
    auto future = result->get_future();
    writer.finishWritingWithCompletionHandler(end, [result](const auto& r) { result->set_value(r); });
    return future.get();
}

namespace {
void waitUntilReady(MovieWriter& writer)
{
    while (!writer.input().isReadyForMoreMediaData())
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}
} // namespace

bool appendWhenReady(MovieWriter& writer, const CVPixelBufferRef& pixels, CMTime time)
{
    waitUntilReady(writer);
    return writer.adaptor().appendPixelBuffer_withPresentationTime(pixels, time);
}

bool repeatWhenReady(MovieWriter& writer, CMTime time)
{
    waitUntilReady(writer);
    return writer.adaptor().appendPrevious_withPresentationTime(time);
}

} // namespace lumavex
