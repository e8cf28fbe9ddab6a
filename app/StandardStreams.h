// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/LineWriter.h"

#include <QString>

#include <atomic>

namespace lumavex {

/// Opens /dev/null where standard input, output or error are closed. Else the next file that is opened gets the number,
/// and what is meant for a terminal goes into it.
void openClosedStandardStreams();

/// Standard output and error for a program whose main thread must not wait for those who read them. What nobody reads
/// is left out after a while, and counted. Any thread.
class StandardStreams {
public:
    StandardStreams();

    void print(const QString& line); ///< on standard output
    void tell(const QString& line);  ///< on standard error
    /// In one line of the terminal that standard error is; else, and while something waits there, nothing.
    void showProgress(const QString& text);
    void endProgress(); ///< erases that line
    bool errorIsTerminal() const { return errorIsTerminal_; }
    /// Before the program ends: waits until everything is written, two seconds at most.
    void finish();

private:
    LineWriter output_;
    LineWriter error_;
    std::atomic<int> missed_ = 0; ///< lines since the last one that was taken
    const bool errorIsTerminal_;
};

} // namespace lumavex
