// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MovieWriter.h"
#include "tests/support/contentOf.h"

#include <QByteArray>
#include <QImage>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <vector>

namespace lumavex {

struct ProgramResult {
    int exitCode = -1;
    QByteArray output;
    QByteArray errors;
};
/// Runs a program, a minute at most.
ProgramResult runProgram(const QString& program, const QStringList& arguments);

/// A packet as a demultiplexer sees it, in ticks of the track's timescale.
struct Packet {
    std::int64_t time = 0;
    std::int64_t duration = 0;
    std::int64_t size = 0;
    friend bool operator==(const Packet&, const Packet&) = default;
};
/// ffprobe's "avg_frame_rate r_frame_rate" of the video track, such as "30/1 30/1".
QString ratesOf(const QString& path);
/// ffprobe's view of the video track; empty when it cannot open the file.
std::vector<Packet> packetsOf(const QString& path);
/// GStreamer's: the time stamps in nanoseconds.
std::vector<std::int64_t> gstreamerTimesOf(const QString& path);
/// Frames that ffmpeg decodes; -1 when it reports any error.
int framesDecodedFrom(const QString& path);
/// All frames as ffmpeg decodes them.
std::vector<QImage> picturesOf(const QString& path, int width, int height);

/// A pixel buffer of a picture, in the order alpha, red, green, blue.
CVPixelBufferRef pixelBufferOf(const QImage& picture);
/// A picture with soft and hard edges that differs from one `seed` to the next.
QImage testPicture(int width, int height, int seed);
double psnrOf(const QImage& a, const QImage& b);

void writeContent(const QString& path, const QByteArray& content);

/// Finishes and waits.
MovieWriter::Result finishAndWait(MovieWriter& writer, CMTime end);

/// Append as soon as the writer is ready, the latter the previous picture.
bool appendWhenReady(MovieWriter& writer, const CVPixelBufferRef& pixels, CMTime time);
bool repeatWhenReady(MovieWriter& writer, CMTime time);

} // namespace lumavex
