// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/ChildProcess.h"

#include <QProcess>

namespace lumavex {

/// Runs a program through QProcess; its standard input is the null device. A handler may destroy the object.
class QtChildProcess : public ChildProcess {
public:
    QtChildProcess();
    ~QtChildProcess() override;

    void launch(const QString& launchPath, const QStringList& arguments) override;
    /// Asks the program to end, and kills it after three seconds.
    void terminate() override;

private:
    void readOutput();
    void readErrors();
    void hasEnded(const QString& failure);
    QString failureOf(int exitCode, QProcess::ExitStatus status) const;

    QString programName_;
    std::unique_ptr<QProcess> process_;
};

} // namespace lumavex
