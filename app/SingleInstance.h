// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/FileDescriptor.h"

#include <QObject>
#include <QSocketNotifier>

#include <memory>
#include <string>

namespace lumavex {

/// Ensures that one program runs per user: two would empty each other's working folders. The system releases the lock
/// when the process ends, however it ends. The first program listens at a socket beside the lock, without QLocalServer:
/// its library loads twenty others at every start.
class SingleInstance final : public QObject {
    Q_OBJECT
public:
    /// Tries to lock the user's runtime folder.
    SingleInstance();

    bool isFirst() const { return lock_.isOpen(); }
    /// Asks the first program to come to the front; waits up to 2 s for its answer. False when it does not answer.
    bool activateFirst() const;

Q_SIGNALS:
    /// Another program was started, activated this one and ended.
    void activated();

private:
    void listen();
    void answer();

    const std::string folder_; ///< in the file system's encoding
    FileDescriptor lock_;
    FileDescriptor server_;
    std::unique_ptr<QSocketNotifier> calls_;
};

} // namespace lumavex
