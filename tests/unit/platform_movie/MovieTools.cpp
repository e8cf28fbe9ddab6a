// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/unit/platform_movie/MovieTools.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <chrono>
#include <cmath>
#include <cstring>
#include <fcntl.h>
#include <future>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace lumavex {

// Not QProcess: it forks in a way that thread sanitizers take for races in this process.
pid_t startProgram(const QStringList& command, const QString& outputPath, const QString& errorPath)
{
    std::vector<std::string> words;
    for (const QString& word : command)
        words.push_back(QFile::encodeName(word).toStdString());
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);

    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    const int flags = O_WRONLY | O_CREAT | O_TRUNC;
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, QFile::encodeName(outputPath).constData(), flags, 0600);
    posix_spawn_file_actions_addopen(&files, STDERR_FILENO, QFile::encodeName(errorPath).constData(), flags, 0600);
    pid_t program = -1;
    if (posix_spawnp(&program, arguments[0], &files, nullptr, arguments.data(), environ) != 0)
        program = -1;
    posix_spawn_file_actions_destroy(&files);
    return program;
}

int waitForProgram(pid_t program)
{
    int status = 0;
    if (program < 0 || waitpid(program, &status, 0) != program || !WIFEXITED(status))
        return -1;
    return WEXITSTATUS(status);
}

ProgramResult runProgram(const QString& program, const QStringList& arguments)
{
    const QTemporaryDir folder;
    const QString output = folder.filePath(QStringLiteral("output"));
    const QString errors = folder.filePath(QStringLiteral("errors"));
    const QStringList command = QStringList{QStringLiteral("timeout"), QStringLiteral("60"), program} + arguments;
    const int exitCode = waitForProgram(startProgram(command, output, errors));
    return {exitCode, contentOf(output), contentOf(errors)};
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
        runProgram(QStringLiteral("ffprobe"),
                   {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-select_streams"),
                    QStringLiteral("v"), QStringLiteral("-show_entries"), QStringLiteral("packet=pts,duration,size"),
                    QStringLiteral("-of"), QStringLiteral("csv=p=0"), path});
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
    const auto result = runProgram(QStringLiteral("gst-launch-1.0"),
                                   {QStringLiteral("-v"), QStringLiteral("filesrc"), QStringLiteral("location=") + path,
                                    QStringLiteral("!"), QStringLiteral("qtdemux"), QStringLiteral("name=d"),
                                    QStringLiteral("d.video_0"), QStringLiteral("!"), QStringLiteral("jpegdec"),
                                    QStringLiteral("!"), QStringLiteral("fakesink"), QStringLiteral("silent=false")});
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
    const auto result =
        runProgram(QStringLiteral("ffmpeg"),
                   {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-i"), path, QStringLiteral("-map"),
                    QStringLiteral("0:v"), QStringLiteral("-fps_mode"), QStringLiteral("passthrough"),
                    QStringLiteral("-f"), QStringLiteral("framecrc"), QStringLiteral("-")});
    if (result.exitCode != 0 || !result.errors.isEmpty())
        return -1;
    int frames = 0;
    for (const QByteArray& line : result.output.split('\n'))
        frames += !line.isEmpty() && !line.startsWith('#');
    return frames;
}

std::vector<QImage> picturesOf(const QString& path, int width, int height)
{
    const auto result = runProgram(QStringLiteral("ffmpeg"),
                                   {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-i"), path,
                                    QStringLiteral("-fps_mode"), QStringLiteral("passthrough"), QStringLiteral("-f"),
                                    QStringLiteral("rawvideo"), QStringLiteral("-pix_fmt"), QStringLiteral("bgra"),
                                    QStringLiteral("-sws_flags"),
                                    QStringLiteral("accurate_rnd+full_chroma_int+bicubic"), QStringLiteral("-")});
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

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
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
