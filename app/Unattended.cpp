// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Unattended.h"

#include "app/AppDelegate.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <cstdio>
#include <unistd.h>
#include <utility>

namespace lumavex {

namespace {

void print(std::FILE* stream, const QString& line)
{
    std::fputs(qUtf8Printable(line + u'\n'), stream);
    std::fflush(stream);
}

constexpr const char* eraseLine = "\r\033[K";

} // namespace

int UnattendedDialogs::runAlert(const Alert& alert)
{
    if (alert.messageText != QLatin1String("Success"))
        print(stderr, QStringLiteral("lumavex: %1: %2").arg(alert.messageText, alert.informativeText));
    return static_cast<int>(alert.buttons.size()) - 1;
}

std::optional<QString> UnattendedDialogs::runSavePanel(const SavePanel&)
{
    const QFileInfo wanted(QFileInfo(options_.output).absoluteFilePath());
    const QString suffix = wanted.suffix().isEmpty() ? QString() : u'.' + wanted.suffix();
    QString path = wanted.filePath();
    // The file was not there when the recording began: somebody else's by now, and not to be replaced.
    for (int n = 2; options_.existing == LaunchOptions::Existing::Refuse && QFileInfo::exists(path); ++n)
        path = QStringLiteral("%1/%2-%3%4").arg(wanted.path(), wanted.completeBaseName(), QString::number(n), suffix);
    return path;
}

UnattendedRecording::UnattendedRecording(AppDelegate& app, RunLoop& runLoop, const LaunchOptions& options)
    : app_(app), runLoop_(runLoop), options_(options), terminal_(isatty(STDERR_FILENO) == 1)
{
    connect(&app_, &AppDelegate::recordingFinished, this, &UnattendedRecording::finished);
}

void UnattendedRecording::begin()
{
    if (!app_.launchProblem.isEmpty()) {
        finished({}, app_.launchProblem, Kept::Nothing);
        return;
    }
    // A camera's size, which the movie may take, is known with its first picture.
    const Nanoseconds patience = runLoop_.now() + std::chrono::seconds(3);
    if (options_.needsCamera())
        runLoop_.runUntil([&] { return app_.camera.size_Camera.width > 0 || runLoop_.now() > patience; });
    app_.OnToolbarRecord();
    if (app_.recording.m_RecordStatus != Recording)
        return;
    const TimerId stop =
        runLoop_.scheduleOnce({1, 1}, [this](const TimerFiring& firing) { app_.stopRecording(firing.deadline); });
    runLoop_.setNextDeadline(
        stop, app_.recording.notBefore
                  + std::chrono::duration_cast<Nanoseconds>(std::chrono::duration<double>(*options_.recordSeconds)));
    if (terminal_)
        progressTimer_ = runLoop_.scheduleRepeating({1, 4}, RunLoopMode::Common, TimerOrder::Other,
                                                    [this](const TimerFiring&) { showProgress(); });
}

void UnattendedRecording::endEarly()
{
    if (app_.recording.stopping)
        app_.cancelFinishing();
    else if (app_.recording.m_RecordStatus == Idle)
        finished({}, tr("The program was told to end before the recording began."), Kept::Nothing);
    else
        app_.OnToolbarStop();
}

void UnattendedRecording::showProgress()
{
    if (app_.recording.m_RecordStatus != Recording)
        return;
    const QString line = tr("Recording %1 s of %2 s, ends early with Ctrl+C")
                             .arg(CMTimeGetSeconds(app_.recording.m_Current_Video_Frame), 0, 'f', 1)
                             .arg(*options_.recordSeconds, 0, 'f', 1);
    std::fprintf(stderr, "%s%s", eraseLine, qUtf8Printable(line));
}

void UnattendedRecording::finished(const QString& path, const QString& problem, Kept kept)
{
    if (std::exchange(ended_, true))
        return;
    runLoop_.invalidate(progressTimer_);
    if (terminal_)
        std::fputs(eraseLine, stderr);
    if (!problem.isEmpty())
        print(stderr, QStringLiteral("lumavex: ") + problem);
    if (!path.isEmpty())
        print(stdout, path);
    status_ = kept == Kept::AsAsked ? 0 : kept == Kept::Otherwise ? 3 : 1;
    const auto end = [this] {
        app_.finishRescue(); // no time was lost with an earlier run's recording before this one
        QCoreApplication::exit(status_);
    };
    QMetaObject::invokeMethod(this, end, Qt::QueuedConnection);
}

} // namespace lumavex
