// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/qt/QtChildProcess.h"

#include "platform/PlatformText.h"

#include <QFileInfo>
#include <QTimer>

#include <chrono>
#include <csignal>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <utility>

namespace lumavex {

namespace {

constexpr std::chrono::seconds kPatience{3};

QString whyNotStarted(const QString& launchPath, const QProcess& process)
{
    const QFileInfo program(launchPath);
    if (launchPath.contains(u'/') && !program.exists())
        return PlatformText::tr("The program “%1” is not installed.").arg(launchPath);
    if (launchPath.contains(u'/') && (!program.isFile() || !program.isExecutable()))
        return PlatformText::tr("“%1” is not a program that can be run.").arg(launchPath);
    return PlatformText::tr("The program “%1” could not be started: %2.").arg(launchPath, process.errorString());
}

} // namespace

QtChildProcess::QtChildProcess() : process_(std::make_unique<QProcess>())
{
    process_->setStandardInputFile(QProcess::nullDevice());
    process_->setChildProcessModifier([] {
        ::umask(077); // its files are for the user only
        // A child that hangs must not outlive a killed program. The main thread starts children, and it lives as long
        // as the program.
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    });
    // Queued, so that a handler may destroy this object, and that launch calls no handler.
    QObject::connect(
        process_.get(), &QProcess::readyReadStandardOutput, process_.get(), [this] { readOutput(); },
        Qt::QueuedConnection);
    QObject::connect(
        process_.get(), &QProcess::readyReadStandardError, process_.get(), [this] { readErrors(); },
        Qt::QueuedConnection);
    QObject::connect(
        process_.get(), &QProcess::finished, process_.get(),
        [this](int exitCode, QProcess::ExitStatus status) { hasEnded(failureOf(exitCode, status)); },
        Qt::QueuedConnection);
    QObject::connect(
        process_.get(), &QProcess::errorOccurred, process_.get(),
        [this](QProcess::ProcessError error) {
            if (error == QProcess::FailedToStart)
                hasEnded(whyNotStarted(process_->program(), *process_));
        },
        Qt::QueuedConnection);
}

QtChildProcess::~QtChildProcess()
{
    process_->disconnect();
    if (process_->state() != QProcess::NotRunning) {
        process_->kill();
        process_->waitForFinished(); // a killed program ends at once; without this it would stay a zombie
    }
}

void QtChildProcess::launch(const QString& launchPath, const QStringList& arguments)
{
    programName_ = QFileInfo(launchPath).fileName();
    process_->start(launchPath, arguments, QIODevice::ReadOnly);
}

void QtChildProcess::terminate()
{
    if (process_->state() == QProcess::NotRunning)
        return;
    process_->terminate();
    QTimer::singleShot(kPatience, process_.get(), &QProcess::kill);
}

void QtChildProcess::readOutput()
{
    const QByteArray data = process_->readAllStandardOutput();
    const auto handler = outData; // outlives this object if the handler destroys it
    if (!data.isEmpty() && handler)
        handler(data);
}

void QtChildProcess::readErrors()
{
    const QByteArray data = process_->readAllStandardError();
    const auto handler = errData;
    if (!data.isEmpty() && handler)
        handler(data);
}

void QtChildProcess::hasEnded(const QString& failure)
{
    const auto handler = std::exchange(terminated, {});
    if (handler)
        handler(failure);
}

QString QtChildProcess::failureOf(int exitCode, QProcess::ExitStatus status) const
{
    if (status == QProcess::CrashExit)
        return PlatformText::tr("The program “%1” ended unexpectedly.").arg(programName_);
    if (exitCode != 0)
        return PlatformText::tr("The program “%1” failed (status %2).").arg(programName_).arg(exitCode);
    return {};
}

} // namespace lumavex
