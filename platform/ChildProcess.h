// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

namespace lumavex {

/// One run of another program, without standard input. Main thread; handlers are called from the run loop.
class ChildProcess {
public:
    virtual ~ChildProcess() = default; ///< a program still running is killed

    std::function<void(const QByteArray&)> outData; ///< standard output as it arrives
    std::function<void(const QByteArray&)> errData; ///< standard error as it arrives
    /// The program has ended, or could not be started. Called once. `failure` is empty for exit status 0, else the
    /// reason as text for the user.
    std::function<void(const QString& failure)> terminated;

    virtual void launch(const QString& launchPath, const QStringList& arguments) = 0;
    virtual void terminate() = 0;
};

using ChildProcessFactory = std::function<std::unique_ptr<ChildProcess>()>;

} // namespace lumavex
