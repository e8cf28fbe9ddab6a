// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/FileDescriptor.h"

#include <QObject>
#include <QSocketNotifier>

#include <memory>
#include <string>

namespace lumavex {

/// Sees to it that one program runs per user: two would empty each other's working folders. The system's lock ends with
/// the process, however that ends. The first one listens at a socket beside it, without QLocalServer: the library of
/// that brings twenty others along, which every start would have to load.
class SingleInstance final : public QObject {
    Q_OBJECT
public:
    /// Takes the lock in the user's runtime folder.
    SingleInstance();

    bool isFirst() const { return lock_.isOpen(); }
    /// Asks the first program to come to the front; waits up to 2 s for it. False when it does not answer.
    bool activateFirst() const;

Q_SIGNALS:
    /// Another program was started and ended in this one's favour.
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
