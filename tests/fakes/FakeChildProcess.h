// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/ChildProcess.h"

#include <QObject>

#include <vector>

namespace lumavex {

/// A program that follows a script, one step per turn of the event loop. A handler may destroy the object.
class FakeChildProcess : public ChildProcess {
public:
    struct Chunk {
        enum class Channel { Out, Err } channel = Channel::Err;
        QByteArray data;
    };
    enum class End { ByItself, WhenTerminated };

    struct Script {
        std::vector<Chunk> chunks;
        QString failure; ///< passed to `terminated`
        End end = End::ByItself;
        /// The program's effect on files; called with its arguments right before it ends by itself. May be empty.
        std::function<void(const QStringList& arguments)> work;
    };

    /// A launched program; the test keeps the record, since the fake itself is destroyed early.
    struct Launch {
        QString launchPath;
        QStringList arguments;
    };

    explicit FakeChildProcess(Script script, std::vector<Launch>* launches = nullptr);

    void launch(const QString& launchPath, const QStringList& arguments) override;
    void terminate() override;

    /// `launches`, when given, must outlive the factory.
    static ChildProcessFactory factory(Script script, std::vector<Launch>* launches = nullptr);

private:
    void step();
    void queueStep();
    void hasEnded(QString failure); ///< by value: the handler may destroy the fake

    Script script_;
    std::vector<Launch>* launches_;
    QStringList arguments_;
    std::size_t next_ = 0;
    bool isRunning_ = false;
    QObject turns_; ///< destroying it drops queued steps
};

} // namespace lumavex
