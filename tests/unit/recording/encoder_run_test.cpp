// SPDX-License-Identifier: GPL-3.0-or-later
#include "recording/EncoderRun.h"
#include "recording/WorkerRun.h"
#include "tests/fakes/FakeChildProcess.h"
#include "tests/fakes/FakeRunLoop.h"
#include "tests/support/EventRunLoop.h"

#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <future>
#include <thread>

namespace lumavex {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class EncoderRunTest : public testing::Test {
protected:
    EncoderRunTest()
    {
        job.sffmpegPath = "/usr/bin/ffmpeg";
        job.s_Video_File_Source = "/v/2026-07-09-23-04-05.mov";
        job.s_Sound_File_Source = "/v/audio.wav";
        job.s_AV_File_Source = folder_.filePath("finalvideo.mov");
        job.i_Orig_Duration_in_Seconds = 14;
        script.work = [](const QStringList& arguments) {
            QFile file(arguments.last());
            ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write("movie") == 5);
        };
    }

    QString run()
    {
        return runEncoder(job, state, FakeChildProcess::factory(script, &launches), runLoop_,
                          {[this](float percentage) { percentages.push_back(percentage); }, {}, {}});
    }

    EncoderJob job;
    EncoderState state;
    FakeChildProcess::Script script;
    std::vector<FakeChildProcess::Launch> launches;
    std::vector<float> percentages;

private:
    QTemporaryDir folder_;
    EventRunLoop runLoop_;
};

TEST_F(EncoderRunTest, PassesTheArgumentsAndTheProgressOn)
{
    using Chunk = FakeChildProcess::Chunk;
    script.chunks = {{Chunk::Channel::Err, "ffmpeg version 5\n"},
                     {Chunk::Channel::Out, "time=00:00:01.00"},
                     {Chunk::Channel::Err, "size=N/A time=00:00:05.12 bitrate=N/A\rsize=N/A time=00:00:07.50 bit"},
                     {Chunk::Channel::Err, "time=00:00:14.02 bitrate=1\n"}};
    EXPECT_EQ(run(), "");
    EXPECT_THAT(percentages, ElementsAre(50.0F, 100.0F));
    ASSERT_EQ(launches.size(), 1U);
    EXPECT_EQ(launches[0].launchPath, job.sffmpegPath);
    EXPECT_EQ(launches[0].arguments, (QStringList{"-i", job.s_Video_File_Source, "-i", job.s_Sound_File_Source, "-c",
                                                  "copy", job.s_AV_File_Source}));
    EXPECT_TRUE(state.terminated);
    state = {.u_Type_Progress = 1};
    EXPECT_EQ(run(), "");
    EXPECT_EQ(percentages.size(), 2U) << "reports of another operation moved the bar";
}

TEST_F(EncoderRunTest, AFailureComesWithTheEncodersLastLines)
{
    script.chunks = {
        {FakeChildProcess::Chunk::Channel::Err, QByteArray(10000, 'x') + "\nfirst\n"},
        {FakeChildProcess::Chunk::Channel::Err, "size=1 time=00:00:01.00\r\n\nav_interleaved"},
        {FakeChildProcess::Chunk::Channel::Err, "_write_frame(): No space left on device\nConversion failed!\n"}};
    script.failure = "The program failed.";
    script.work = {};
    EXPECT_EQ(run(), "The program failed.\nfirst\nav_interleaved_write_frame(): No space left on device\n"
                     "Conversion failed!");
}

TEST_F(EncoderRunTest, NonsenseIsShownShortAndPrintable)
{
    QByteArray nonsense(200'000, 'x');
    nonsense += "\n\x01\xff\xfe\x1b[31mred" + QByteArray(3, '\0') + "\n";
    script.chunks = {{FakeChildProcess::Chunk::Channel::Err, nonsense}};
    script.failure = "The program failed.";
    script.work = {};
    const QString told = run();
    EXPECT_LT(told.size(), 600);
    for (const QChar c : told)
        EXPECT_TRUE(c.isPrint() || c == '\n') << int(c.unicode());
    EXPECT_TRUE(told.endsWith("[31mred"));
}

TEST_F(EncoderRunTest, OneThatHangsIsEndedWhenCancelledOrWhenTheFileDoesNotGrowAnyMore)
{
    FakeClock clock;
    FakeRunLoop loop(clock);
    script.end = FakeChildProcess::End::WhenTerminated;
    const auto factory = FakeChildProcess::factory(script, &launches);
    int asked = 0;
    EXPECT_EQ(runEncoder(job, state, factory, loop, {{}, [&asked] { return ++asked > 10; }, {}}),
              "Joining was cancelled.");

    const Nanoseconds begin = clock.time;
    // Slow, but it gets on: the file grows for a while.
    loop.scheduleRepeating({20, 1}, RunLoopMode::Common, [&](const TimerFiring&) {
        QFile file(job.s_AV_File_Source);
        if (clock.time - begin < std::chrono::seconds(100) && file.open(QIODevice::Append))
            file.write("more");
    });
    EXPECT_THAT(runEncoder(job, state, factory, loop, {{}, {}, std::chrono::seconds(60)}).toStdString(),
                HasSubstr("for 60 seconds"));
    EXPECT_NEAR(std::chrono::duration<double>(clock.time - begin).count(), 80 + 60, 2);
}

TEST_F(EncoderRunTest, SuccessWithoutAFileIsAFailure)
{
    script.work = {};
    EXPECT_EQ(run(), "The encoder wrote no file.");
}

TEST(WorkerRun, ServesEventsWhileAnotherThreadWorks)
{
    EventRunLoop runLoop;
    std::promise<std::thread::id> served;
    QMetaObject::invokeMethod(
        QCoreApplication::instance(), [&served] { served.set_value(std::this_thread::get_id()); },
        Qt::QueuedConnection);
    std::thread::id worker;
    std::thread::id server;
    runOnWorker(runLoop, [&] {
        worker = std::this_thread::get_id();
        server = served.get_future().get(); // comes only if the main thread goes on serving events
    });
    EXPECT_EQ(server, std::this_thread::get_id());
    EXPECT_NE(worker, server);
}

} // namespace
} // namespace lumavex
