// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/LineWriter.h"

#include <QString>

#include <atomic>

namespace lumavex {

/// Opens /dev/null as standard input, output or error where they are closed. Otherwise the next opened file would get
/// the number, and terminal output would go into it.
void openClosedStandardStreams();

/// Standard output and error for a program whose main thread must not wait for their readers. Lines that are not read
/// are dropped after a while and counted. Any thread.
class StandardStreams {
public:
    StandardStreams();

    void print(const QString& line); ///< to standard output
    void tell(const QString& line);  ///< to standard error
    /// Shows the text on one line of the terminal at standard error. Does nothing without a terminal or while output is
    /// queued.
    void showProgress(const QString& text);
    void endProgress(); ///< erases that line
    bool errorIsTerminal() const { return errorIsTerminal_; }
    /// To be called before the program ends: waits at most two seconds until all is written.
    void finish();

private:
    LineWriter output_;
    LineWriter error_;
    std::atomic<int> missed_ = 0; ///< lines dropped since the last accepted one
    const bool errorIsTerminal_;
};

} // namespace lumavex
