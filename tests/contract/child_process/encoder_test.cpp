// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/movie/MovieReader.h"
#include "platform/qt/QtChildProcess.h"
#include "recording/EncoderRun.h"
#include "recording/Rescue.h"
#include "tests/support/EventRunLoop.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace lumavex {
namespace {

using testing::HasSubstr;

/// The real encoder joins a real movie and sound file of three seconds.
class EncoderTest : public testing::Test {
protected:
    void SetUp() override
    {
        job.sffmpegPath = QStandardPaths::findExecutable("ffmpeg");
        ASSERT_FALSE(job.sffmpegPath.isEmpty()) << "ffmpeg is needed";
        job.s_Video_File_Source = folder.filePath("2026-07-09-23-04-05.mov");
        job.s_Sound_File_Source = folder.filePath("audio.wav");
        job.s_AV_File_Source = folder.filePath("finalvideo.mov");
        job.i_Orig_Duration_in_Seconds = 3;
        ASSERT_TRUE(make({"testsrc=size=320x240:rate=30:duration=3", "-c:v", "mjpeg", "-pix_fmt", "yuvj420p", "-f",
                          "mp4", job.s_Video_File_Source}));
        ASSERT_TRUE(make({"sine=frequency=440:sample_rate=44100:duration=3", "-ac", "2", "-c:a", "pcm_s16le",
                          job.s_Sound_File_Source}));
    }

    bool make(const QStringList& sourceAndOutput) const
    {
        const QStringList input{"-loglevel", "error", "-nostdin", "-f", "lavfi", "-i"};
        return QProcess::execute(job.sffmpegPath, input + sourceAndOutput) == 0;
    }
    static QString streamsOf(const QString& path)
    {
        QProcess probe;
        probe.start("ffprobe",
                    {"-v", "error", "-show_entries", "stream=codec_name:format=duration", "-of", "csv=p=0", path});
        probe.waitForFinished();
        return QString::fromUtf8(probe.readAllStandardOutput());
    }
    QString run()
    {
        return runEncoder(job, createChildProcess, runLoop, {[this](float percentage) { last = percentage; }, {}, {}});
    }

    const ChildProcessFactory createChildProcess = [] { return std::make_unique<QtChildProcess>(); };
    EventRunLoop runLoop;
    QTemporaryDir folder;
    EncoderJob job;
    float last = -1;
};

TEST_F(EncoderTest, JoinsMovieAndSoundWithoutEncodingAgain)
{
    EXPECT_EQ(run(), "");
    EXPECT_GE(last, 60.0F); // its last report is of the last packet, within the third second
    EXPECT_LE(last, 100.0F);
    const QString streams = streamsOf(job.s_AV_File_Source);
    EXPECT_THAT(streams.toStdString(), HasSubstr("mjpeg"));
    EXPECT_THAT(streams.toStdString(), HasSubstr("pcm_s16le"));
    EXPECT_THAT(streams.toStdString(), HasSubstr("3.0"));
}

TEST_F(EncoderTest, SaysWhyItFailed)
{
    QFile::resize(job.s_Sound_File_Source, 3);
    EXPECT_THAT(run().toStdString(), HasSubstr("Invalid data found"));

    ASSERT_TRUE(make({"sine=duration=1", "-y", job.s_Sound_File_Source}));
    ASSERT_TRUE(QFile::copy(job.s_Video_File_Source, job.s_AV_File_Source));
    EXPECT_EQ(run(), ""); // what was left there is in nobody's way

    job.sffmpegPath = folder.filePath("no-ffmpeg");
    EXPECT_THAT(run().toStdString(), HasSubstr("is not installed"));
}

TEST_F(EncoderTest, JoinsARescuedRecordingInPlace)
{
    ASSERT_TRUE(QFile::rename(job.s_Sound_File_Source, folder.filePath("left.wav")));
    QFile sound(folder.filePath("left.wav"));
    ASSERT_TRUE(sound.open(QIODevice::ReadWrite) && sound.seek(4) && sound.write("\0\0\0\0", 4) == 4); // short header
    sound.close();
    const QString recoveredFolder = folder.filePath("LumavexRecovered");
    const RescuedRecording recording = putAside(job.s_Video_File_Source, sound.fileName(), recoveredFolder);
    ASSERT_EQ(recording.error, "");

    const RescueTools tools{
        [](const QString&) { return QString(); }, readMovie, createChildProcess, job.sffmpegPath, {}};
    const std::vector<RescueNote> notes = completeRescued({recording}, tools, runLoop);
    ASSERT_EQ(notes.size(), 1U) << qPrintable(rescueMessage(notes));
    EXPECT_EQ(notes[0].path, recoveredFolder + "/2026-07-09-23-04-05.mov");
    EXPECT_THAT(streamsOf(notes[0].path).toStdString(), HasSubstr("pcm_s16le"));
    EXPECT_FALSE(QFileInfo::exists(recording.sound));
}

} // namespace
} // namespace lumavex
