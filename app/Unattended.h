// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/options/LaunchOptions.h"
#include "platform/Dialogs.h"
#include "platform/RunLoop.h"

#include <QObject>

namespace lumavex {

class AppDelegate;
class StandardStreams;
enum class Kept;

/// Answers in place of a user: the save panel with the output file, alerts with a line on standard error unless the
/// run's own report says the same.
class UnattendedDialogs final : public Dialogs {
public:
    /// `streams` must outlive this object.
    UnattendedDialogs(const LaunchOptions& options, StandardStreams& streams) : options_(options), streams_(streams) {}

    int runAlert(const Alert& alert) override;
    std::optional<QString> runSavePanel(const SavePanel& panel) override;
    std::optional<QString> runOpenPanel(const QString&, const QStringList&) override { return std::nullopt; }
    bool open(const QUrl&) override { return false; }

private:
    const LaunchOptions options_;
    StandardStreams& streams_;
};

/// One recording or one snapshot without a user, through the same commands as the buttons. A recording shows its
/// progress on a terminal and stops when its time is over. Ends the program with status 0 and the path of the saved
/// file, or with a message and status 3 when the recording was kept in another way than requested, 1 when nothing was
/// saved.
class UnattendedRun final : public QObject {
    Q_OBJECT
public:
    /// `limitation` is the part of the screen that cannot be seen (ScreenGrabber::limitation): with one, no screen is
    /// recorded.
    UnattendedRun(AppDelegate& app, RunLoop& runLoop, StandardStreams& streams, const LaunchOptions& options,
                  const QString& limitation);

    void begin();
    /// Stops early and saves. Before a recording has begun it ends the program; during joining or copying it cancels
    /// that step and keeps the files, be they of this run or of an earlier one.
    void endEarly();
    int exitStatus() const { return status_; } ///< 1 until the recording has ended

private:
    void waitForCamera();
    bool waitForScreen();
    void record();
    void takePicture();
    void showProgress();
    void recorded(const QString& path, const QString& problem, Kept kept);
    void finished(const QString& path, const QString& problem, Kept kept);

    AppDelegate& app_;
    RunLoop& runLoop_;
    StandardStreams& streams_;
    const LaunchOptions options_;
    const QString limitation_;
    TimerId progressTimer_ = 0;
    int status_ = 1;
    bool ended_ = false;
};

} // namespace lumavex
