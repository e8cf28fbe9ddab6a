// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

namespace lumavex::test {

/// Asks until the answer is yes, for at most ten seconds; the last answer.
bool eventually(const std::function<bool()>& question);

/// An X server of the test's own, which $DISPLAY names while this exists.
class TestServer {
public:
    struct Options {
        QString screen = QStringLiteral("640x480x24");
        bool windowManager = false;
        bool compositingManager = false;
        QStringList arguments; ///< more arguments of Xvfb's
    };

    explicit TestServer(const Options& options);
    ~TestServer();
    /// Ends the server as a crash would.
    void kill();
    /// Runs a program to its end; true when its status was 0.
    static bool run(const QString& program, const QStringList& arguments);

private:
    void start(const QString& program, const QStringList& arguments);

    QByteArray displayBefore_;
    QTemporaryDir home_;
    std::vector<std::unique_ptr<QProcess>> processes_; ///< the first is the server
};

} // namespace lumavex::test
