// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/qt/QtChildProcess.h"
#include "tests/fakes/FakeChildProcess.h"

#include <QElapsedTimer>
#include <QTemporaryFile>
#include <QTest>

#include <gmock/gmock.h>

#include <functional>
#include <map>

namespace lumavex {
namespace {

using testing::HasSubstr;

/// The programs that every implementation is asked to run.
enum class Behaviour { SpeaksAndSucceeds, Fails, CannotStart, RunsUntilTerminated };

/// Makes a process that behaves so when it is launched with the line.
struct Kind {
    const char* name;
    std::function<std::unique_ptr<ChildProcess>(Behaviour)> make;
};

std::unique_ptr<ChildProcess> makeFake(Behaviour behaviour)
{
    using Chunk = FakeChildProcess::Chunk;
    FakeChildProcess::Script script;
    if (behaviour == Behaviour::SpeaksAndSucceeds)
        script.chunks = {
            {Chunk::Channel::Out, "out\n"}, {Chunk::Channel::Err, "one\n"}, {Chunk::Channel::Err, "two\n"}};
    if (behaviour == Behaviour::Fails || behaviour == Behaviour::CannotStart)
        script.failure = "The program failed.";
    if (behaviour == Behaviour::RunsUntilTerminated) {
        script.chunks = {{Chunk::Channel::Out, "started\n"}};
        script.end = FakeChildProcess::End::WhenTerminated;
    }
    return std::make_unique<FakeChildProcess>(script);
}

class ChildProcessContract : public testing::TestWithParam<Kind> {
protected:
    void launch(Behaviour behaviour)
    {
        process = GetParam().make(behaviour);
        const auto appendTo = [this](QByteArray& all) {
            return [this, &all](const QByteArray& data) {
                EXPECT_EQ(ends, 0) << "data after the end";
                all += data;
            };
        };
        process->outData = appendTo(out);
        process->errData = appendTo(err);
        process->terminated = [this](const QString& what) {
            ++ends;
            failure = what;
        };
        const std::map<Behaviour, const char*> lines = {
            {Behaviour::SpeaksAndSucceeds, "echo out; echo one >&2; echo two >&2"},
            {Behaviour::Fails, "exit 3"},
            {Behaviour::CannotStart, ""},
            {Behaviour::RunsUntilTerminated, "echo started; exec sleep 600"},
        };
        const bool starts = behaviour != Behaviour::CannotStart;
        process->launch(starts ? "/bin/sh" : "/nonexistent/program", {"-c", lines.at(behaviour)});
        EXPECT_TRUE(ends == 0 && out.isEmpty() && err.isEmpty()) << "a handler was called from within launch";
    }
    void waitForEnd()
    {
        ASSERT_TRUE(QTest::qWaitFor([this] { return ends > 0; }, 20000));
        QTest::qWait(20); // for a second call that must not come
        EXPECT_EQ(ends, 1);
    }

    std::unique_ptr<ChildProcess> process;
    QByteArray out;
    QByteArray err;
    int ends = 0;
    QString failure;
};

TEST_P(ChildProcessContract, HandsEverythingOverBeforeTheEnd)
{
    launch(Behaviour::SpeaksAndSucceeds);
    waitForEnd();
    EXPECT_EQ(out, "out\n");
    EXPECT_EQ(err, "one\ntwo\n");
    EXPECT_EQ(failure, "");
}

TEST_P(ChildProcessContract, FailuresAreToldOnce)
{
    for (const Behaviour behaviour : {Behaviour::Fails, Behaviour::CannotStart}) {
        ends = 0;
        launch(behaviour);
        waitForEnd();
        EXPECT_NE(failure, "");
    }
}

TEST_P(ChildProcessContract, EndsWhenTold)
{
    launch(Behaviour::RunsUntilTerminated);
    ASSERT_TRUE(QTest::qWaitFor([this] { return out == "started\n"; }, 20000));
    EXPECT_EQ(ends, 0);
    process->terminate();
    waitForEnd();
    EXPECT_NE(failure, "");
    process->terminate(); // nothing left to end
}

TEST_P(ChildProcessContract, ADestroyedProcessCallsNobody)
{
    launch(Behaviour::RunsUntilTerminated);
    ASSERT_TRUE(QTest::qWaitFor([this] { return !out.isEmpty(); }, 20000));
    process.reset();
    QTest::qWait(20);
    EXPECT_EQ(ends, 0);
}

TEST_P(ChildProcessContract, AHandlerMayDestroyTheProcess)
{
    launch(Behaviour::Fails);
    process->terminated = [this](const QString& what) {
        process.reset();
        failure = what; // the closure must have outlived the process
        ++ends;
    };
    waitForEnd();
    EXPECT_NE(failure, "");
}

INSTANTIATE_TEST_SUITE_P(Implementations, ChildProcessContract,
                         testing::Values(Kind{"Qt", [](Behaviour) { return std::make_unique<QtChildProcess>(); }},
                                         Kind{"Fake", makeFake}),
                         [](const auto& about) { return about.param.name; });

/// Result of one run of a real program.
struct RealRun {
    QByteArray out;
    qsizetype errBytes = 0;
    QString failure;
};

RealRun runReally(const QString& launchPath, const QStringList& arguments)
{
    RealRun run;
    bool ended = false;
    QtChildProcess process;
    process.outData = [&run](const QByteArray& data) { run.out += data; };
    process.errData = [&run](const QByteArray& data) { run.errBytes += data.size(); };
    process.terminated = [&](const QString& failure) {
        run.failure = failure;
        ended = true;
    };
    process.launch(launchPath, arguments);
    EXPECT_TRUE(QTest::qWaitFor([&ended] { return ended; }, 20000));
    return run;
}

TEST(QtChildProcess, TellsFailuresApart)
{
    const auto failureOf = [](const QString& path, const QStringList& arguments = {}) {
        return runReally(path, arguments).failure.toStdString();
    };
    EXPECT_THAT(failureOf("/nonexistent/ffmpeg"), HasSubstr("“/nonexistent/ffmpeg” is not installed"));
    QTemporaryFile text;
    ASSERT_TRUE(text.open()); // mode 0600
    EXPECT_THAT(failureOf(text.fileName()), HasSubstr("is not a program that can be run"));
    EXPECT_THAT(failureOf("/bin/sh", {"-c", "exit 3"}), HasSubstr("“sh” failed (status 3)"));
    EXPECT_THAT(failureOf("/bin/sh", {"-c", "kill -SEGV $$"}), HasSubstr("ended unexpectedly"));
    EXPECT_NE(failureOf(""), "");
}

TEST(QtChildProcess, MoreThanAPipeHoldsComesThroughAndThereIsNoStandardInput)
{
    const RealRun run = runReally(
        "/bin/sh",
        {"-c", "head -c 3000000 /dev/zero; head -c 2000000 /dev/zero >&2; cat; printf end"}); // cat would wait
    EXPECT_EQ(run.failure, "");
    EXPECT_EQ(run.out.size(), 3000003);
    EXPECT_EQ(run.errBytes, 2000000);
}

} // namespace
} // namespace lumavex
