// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/qt/QtChildProcess.h"
#include "recording/EncoderRun.h"
#include "tests/support/EventRunLoop.h"

#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace lumavex {
namespace {

TEST(Encoder, TheRealOneTellsItsProgressAndItsReason)
{
    const QTemporaryDir folder;
    EncoderJob job;
    job.sffmpegPath = QStandardPaths::findExecutable("ffmpeg");
    ASSERT_FALSE(job.sffmpegPath.isEmpty()) << "ffmpeg is needed";
    job.s_Video_File_Source = folder.filePath("2026-07-09-23-04-05.mov");
    job.s_Sound_File_Source = folder.filePath("audio.wav");
    job.s_AV_File_Source = folder.filePath("finalvideo.mov");
    job.i_Orig_Duration_in_Seconds = 3;
    const auto make = [&job](const QStringList& sourceAndOutput) {
        const QStringList input{"-loglevel", "error", "-nostdin", "-f", "lavfi", "-i"};
        return QProcess::execute(job.sffmpegPath, input + sourceAndOutput) == 0;
    };
    float last = -1;
    EventRunLoop runLoop;
    const auto run = [&] {
        EncoderState state;
        return runEncoder(job, state, [] { return std::make_unique<QtChildProcess>(); }, runLoop,
                          {[&last](float percentage) { last = percentage; }, {}, {}});
    };
    ASSERT_TRUE(make({"testsrc=size=320x240:rate=30:duration=3", "-c:v", "mjpeg", job.s_Video_File_Source}));
    EXPECT_TRUE(run().contains("No such file")) << "there is no sound";
    ASSERT_TRUE(make({"sine=duration=3", job.s_Sound_File_Source}));
    EXPECT_EQ(run(), "");
    EXPECT_GE(last, 60.0F); // its last report is of the last packet, within the third second
    EXPECT_LE(last, 100.0F);
    last = -1;
    EXPECT_EQ(run(), "") << "what was left there is in nobody's way";
}

} // namespace
} // namespace lumavex
