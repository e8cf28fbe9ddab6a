// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Unattended.h"

#include "app/AppDelegate.h"
#include "app/OutputSize.h"
#include "app/ScreenSizeWatch.h"
#include "app/StandardStreams.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <chrono>
#include <utility>

namespace lumavex {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::seconds snapshotPatience = 10s; ///< for a camera that is still starting

} // namespace

int UnattendedDialogs::runAlert(const Alert& alert)
{
    if (alert.reader == Alert::Reader::Anybody)
        streams_.tell(QStringLiteral("lumavex: %1: %2").arg(alert.messageText, alert.informativeText));
    return static_cast<int>(alert.buttons.size()) - 1;
}

std::optional<QString> UnattendedDialogs::runSavePanel(const SavePanel&)
{
    const QFileInfo wanted(QFileInfo(options_.file()).absoluteFilePath());
    const QString suffix = wanted.suffix().isEmpty() ? QString() : u'.' + wanted.suffix();
    QString path = wanted.filePath();
    // The file did not exist when the program began, so it belongs to another program and must not be replaced.
    for (int n = 2; options_.existing == LaunchOptions::Existing::Refuse && QFileInfo::exists(path); ++n)
        path = QStringLiteral("%1/%2-%3%4").arg(wanted.path(), wanted.completeBaseName(), QString::number(n), suffix);
    return path;
}

UnattendedRun::UnattendedRun(AppDelegate& app, RunLoop& runLoop, StandardStreams& streams, const LaunchOptions& options,
                             const QString& limitation)
    : app_(app), runLoop_(runLoop), streams_(streams), options_(options), limitation_(limitation)
{
    connect(&app_, &AppDelegate::recordingFinished, this, &UnattendedRun::recorded);
    connect(&app_, &AppDelegate::pictureFinished, this,
            [this](const QString& path) { finished(path, {}, path.isEmpty() ? Kept::Nothing : Kept::AsAsked); });
}

void UnattendedRun::begin()
{
    const QString& problem =
        app_.launchProblem.isEmpty() && app_.compose.showsScreen() ? limitation_ : app_.launchProblem;
    if (!problem.isEmpty()) {
        finished({}, problem, Kept::Nothing);
        return;
    }
    waitForCamera();
    if (ended_)
        return;
    if (const QString outside = regionProblem(app_.capture, app_.compose); !outside.isEmpty()) {
        finished({}, outside, Kept::Nothing);
        return;
    }
    const bool cameraLarge = app_.compose.cameraIsPrimary();
    const QString tooFlat = vanishingProblem(cameraLarge ? app_.camera.size_Camera : app_.capture.size_Screen,
                                             app_.compose.size_Video_Output);
    if (!tooFlat.isEmpty()) {
        finished({}, tooFlat, Kept::Nothing);
        return;
    }
    options_.recordSeconds ? record() : takePicture();
}

bool UnattendedRun::waitForScreen()
{
    const Nanoseconds patience = runLoop_.now() + snapshotPatience;
    runLoop_.runUntil([&] {
        app_.grabScreen();
        return !app_.capture.imgScreenCapture.isNull() || ended_ || runLoop_.now() > patience;
    });
    return !app_.capture.imgScreenCapture.isNull() || ended_;
}

void UnattendedRun::waitForCamera()
{
    if (!app_.compose.showsCamera())
        return;
    // The camera's size, which the movie may take, is known after its first picture. A recording may begin without it,
    // a snapshot may not.
    const Nanoseconds patience = runLoop_.now() + (options_.recordSeconds ? 3s : snapshotPatience);
    runLoop_.runUntil([&] { return ended_ || app_.camera.size_Camera.width > 0 || runLoop_.now() > patience; });
}

void UnattendedRun::takePicture()
{
    if (app_.compose.showsCamera() && app_.camera.imgDeviceCapture.isNull()) {
        finished({},
                 tr("The camera %1 sent no picture within %2 seconds.")
                     .arg(app_.camera.s_Camera_Name)
                     .arg(snapshotPatience.count()),
                 Kept::Nothing);
        return;
    }
    if (app_.compose.showsScreen() && !waitForScreen()) {
        finished({}, tr("The screen could not be read within %1 seconds.").arg(snapshotPatience.count()),
                 Kept::Nothing);
        return;
    }
    if (ended_)
        return;
    app_.Timer_Open_Preview_Window_Routine(); // frames are made only while a preview exists, visible or not
    app_.OnToolbarTakePicture();
    // At once, even at a low rate.
    const Nanoseconds now = runLoop_.now();
    for (const TimerId timer : {app_.application.timerVideoRefresh, app_.compose.timerViewRefresh})
        runLoop_.setNextDeadline(timer, now);
}

void UnattendedRun::record()
{
    app_.OnToolbarRecord();
    if (app_.recording.m_RecordStatus != Recording)
        return;
    const TimerId stop =
        runLoop_.scheduleOnce({1, 1}, [this](const TimerFiring& firing) { app_.stopRecording(firing.deadline); });
    // The movie begins with its first frame, and its length counts from there.
    runLoop_.setNextDeadline(
        stop, runLoop_.nextDeadline(app_.compose.timerViewRefresh)
                  + std::chrono::duration_cast<Nanoseconds>(std::chrono::duration<double>(*options_.recordSeconds)));
    if (streams_.errorIsTerminal())
        progressTimer_ =
            runLoop_.scheduleRepeating({1, 4}, RunLoopMode::Common, [this](const TimerFiring&) { showProgress(); });
}

void UnattendedRun::endEarly()
{
    if (ended_)
        app_.cancelRescue();
    else if (app_.recording.isEnding())
        app_.cancelFinishing();
    else if (app_.recording.m_RecordStatus == Idle)
        finished({}, tr("The program was told to end before it began."), Kept::Nothing);
    else
        app_.OnToolbarStop();
}

void UnattendedRun::showProgress()
{
    if (app_.recording.m_RecordStatus != Recording)
        return;
    const QString line = tr("Recording %1 s of %2 s, ends early with Ctrl+C")
                             .arg(app_.recording.movieSeconds(), 0, 'f', 1)
                             .arg(*options_.recordSeconds, 0, 'f', 1);
    streams_.showProgress(line);
}

void UnattendedRun::recorded(const QString& path, const QString& problem, Kept kept)
{
    // The summary on standard error contains the times.
    const auto& recording = app_.recording;
    const bool asAsked =
        recording.incidents.summaryOf(RecordingIncidents::Kind::RegionOutside, recording.movieSeconds()).isEmpty();
    if (kept == Kept::AsAsked && !asAsked)
        finished(path, tr("The movie is black where the region lay outside the screen."), Kept::Otherwise);
    else
        finished(path, problem, kept);
}

void UnattendedRun::finished(const QString& path, const QString& problem, Kept kept)
{
    if (std::exchange(ended_, true))
        return;
    runLoop_.invalidate(progressTimer_);
    streams_.endProgress();
    if (!problem.isEmpty())
        streams_.tell(QStringLiteral("lumavex: ") + problem);
    if (!path.isEmpty())
        streams_.print(path);
    status_ = kept == Kept::AsAsked ? 0 : kept == Kept::Otherwise ? 3 : 1;
    const auto end = [this] {
        app_.finishRescue(); // an earlier run's recording has not delayed this one
        QCoreApplication::exit(status_);
    };
    QMetaObject::invokeMethod(this, end, Qt::QueuedConnection);
}

} // namespace lumavex
