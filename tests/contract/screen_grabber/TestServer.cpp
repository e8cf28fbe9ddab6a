// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/contract/screen_grabber/TestServer.h"

#include <thread>

namespace lumavex::test {

bool eventually(const std::function<bool()>& question)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (std::chrono::steady_clock::now() < end) {
        if (question())
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return question();
}

TestServer::TestServer(const Options& options) : displayBefore_(qgetenv("DISPLAY"))
{
    start(QStringLiteral("Xvfb"),
          QStringList{"-displayfd", "1", "-screen", "0", options.screen, "-nolisten", "tcp", "-noreset"}
              + options.arguments);
    QProcess& server = *processes_.front();
    QByteArray number;
    while (!number.contains('\n') && server.waitForReadyRead(10000))
        number += server.readAllStandardOutput();
    qputenv("DISPLAY", ":" + number.trimmed());
    if (options.windowManager) {
        start(QStringLiteral("openbox"), {"--sm-disable"});
        // It announces itself some time before it reads requests, and one that comes between is left lying until the
        // next.
        for (const QString& desktop : {QStringLiteral("1"), QStringLiteral("0")}) {
            eventually([&] {
                return run(
                    "sh",
                    {"-c", QStringLiteral("xdotool set_desktop %1 && [ $(xdotool get_desktop) = %1 ]").arg(desktop)});
            });
        }
    }
    if (options.compositingManager) {
        start(QStringLiteral("picom"), {"--backend", "xrender", "--config", "/dev/null"});
        eventually([] { return run("sh", {"-c", "xwininfo -root -tree | grep -q '\"picom\"'"}); });
    }
}

TestServer::~TestServer()
{
    while (!processes_.empty()) {
        processes_.back()->terminate();
        if (!processes_.back()->waitForFinished(3000))
            processes_.back()->kill();
        processes_.back()->waitForFinished(3000);
        processes_.pop_back();
    }
    if (displayBefore_.isEmpty())
        qunsetenv("DISPLAY");
    else
        qputenv("DISPLAY", displayBefore_);
}

void TestServer::kill()
{
    processes_.front()->kill();
    processes_.front()->waitForFinished(3000);
}

bool TestServer::run(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    return process.waitForFinished(10000) && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

void TestServer::start(const QString& program, const QStringList& arguments)
{
    auto process = std::make_unique<QProcess>();
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("HOME", home_.path()); // no settings of the user's
    environment.insert("XDG_CONFIG_HOME", home_.path());
    environment.insert("XDG_CACHE_HOME", home_.path());
    process->setProcessEnvironment(environment);
    process->setStandardErrorFile(QProcess::nullDevice());
    process->start(program, arguments);
    process->waitForStarted();
    processes_.push_back(std::move(process));
}

} // namespace lumavex::test
