// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/fake/FakeChildProcess.h"
#include "platform/qt/QtChildProcess.h"
#include "tests/support/EventRunLoop.h"

#include <QElapsedTimer>
#include <QTemporaryFile>
#include <QTest>

#include <gmock/gmock.h>

namespace lumavex {
namespace {

using testing::HasSubstr;

/// The programs that every implementation is asked to run.
enum class Behaviour { SpeaksAndSucceeds, Fails, CannotStart, RunsUntilTerminated };

class ProcessKind {
public:
    virtual ~ProcessKind() = default;
    virtual std::unique_ptr<ChildProcess> make(Behaviour behaviour) = 0;
    virtual void launch(ChildProcess& process, Behaviour behaviour) = 0;
};

class QtKind : public ProcessKind {
    std::unique_ptr<ChildProcess> make(Behaviour) override { return std::make_unique<QtChildProcess>(); }
    void launch(ChildProcess& process, Behaviour behaviour) override
    {
        static const std::map<Behaviour, QString> commands = {
            {Behaviour::SpeaksAndSucceeds, "echo out; echo one >&2; echo two >&2"},
            {Behaviour::Fails, "exit 3"},
            {Behaviour::RunsUntilTerminated, "echo started; exec sleep 600"},
        };
        if (behaviour == Behaviour::CannotStart)
            process.launch("/nonexistent/program", {});
        else
            process.launch("/bin/sh", {"-c", commands.at(behaviour)});
    }
};

class FakeKind : public ProcessKind {
    std::unique_ptr<ChildProcess> make(Behaviour behaviour) override
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
    void launch(ChildProcess& process, Behaviour) override { process.launch("/bin/program", {}); }
};

struct NamedKind {
    const char* name;
    std::shared_ptr<ProcessKind> kind;
};

class ChildProcessContract : public testing::TestWithParam<NamedKind> {
protected:
    void launch(Behaviour behaviour)
    {
        process = GetParam().kind->make(behaviour);
        process->outData = [this](const QByteArray& data) {
            EXPECT_EQ(ends, 0) << "data after the end";
            out += data;
        };
        process->errData = [this](const QByteArray& data) {
            EXPECT_EQ(ends, 0) << "data after the end";
            err += data;
        };
        process->terminated = [this](const QString& what) {
            ++ends;
            failure = what;
        };
        GetParam().kind->launch(*process, behaviour);
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
                         testing::Values(NamedKind{"Qt", std::make_shared<QtKind>()},
                                         NamedKind{"Fake", std::make_shared<FakeKind>()}),
                         [](const auto& about) { return about.param.name; });

/// What one run of a real program gave.
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

TEST(QtChildProcess, GivesNoStandardInput)
{
    const RealRun run = runReally("/bin/sh", {"-c", "cat; echo end of input"}); // would wait for ever on an open one
    EXPECT_EQ(run.out, "end of input\n");
    EXPECT_EQ(run.failure, "");
}

TEST(QtChildProcess, KillsAProgramThatWillNotEnd)
{
    bool ended = false;
    bool ready = false;
    QtChildProcess process;
    process.outData = [&ready](const QByteArray&) { ready = true; };
    process.terminated = [&ended](const QString&) { ended = true; };
    process.launch("/bin/sh", {"-c", "trap '' TERM; echo ready; while :; do sleep 1; done"});
    ASSERT_TRUE(QTest::qWaitFor([&ready] { return ready; }, 20000));
    process.terminate();
    EXPECT_TRUE(QTest::qWaitFor([&ended] { return ended; }, 20000));
}

TEST(QtChildProcess, MoreThanAPipeHoldsComesThrough)
{
    const RealRun run =
        runReally("/bin/sh", {"-c", "head -c 3000000 /dev/zero; head -c 2000000 /dev/zero >&2; printf end"});
    EXPECT_EQ(run.out.size(), 3000003);
    EXPECT_EQ(run.errBytes, 2000000);
}

} // namespace
} // namespace lumavex
