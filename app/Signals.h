// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

namespace lumavex {

/// From here on writing into a pipe that nobody reads, or past the limit of a file's size, fails with its error instead
/// of ending the program by SIGPIPE or SIGXFSZ: a recording is then finished and kept.
void ignoreWriteSignals();

/// SIGINT, SIGTERM and SIGHUP as a Qt signal on the main thread (signal(7): a handler may do next to nothing). SIGHUP
/// stays ignored when the program was started so, by nohup(1). One object.
class TerminationSignals final : public QObject {
    Q_OBJECT
public:
    TerminationSignals();

Q_SIGNALS:
    void terminationRequested();
};

} // namespace lumavex
