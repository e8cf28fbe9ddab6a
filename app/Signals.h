// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

namespace lumavex {

/// After this call, writing to a pipe without a reader, or beyond the file size limit, fails with its error instead of
/// ending the program by SIGPIPE or SIGXFSZ, so that a recording is finished and kept.
void ignoreWriteSignals();

/// SIGINT, SIGTERM and SIGHUP as a Qt signal on the main thread (signal(7): few functions are safe in a handler).
/// SIGHUP stays ignored if it was ignored at the program's start, as by nohup(1). One object per process.
class TerminationSignals final : public QObject {
    Q_OBJECT
public:
    TerminationSignals();

Q_SIGNALS:
    void terminationRequested();
};

} // namespace lumavex
