// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLocalServer>
#include <QObject>

namespace lumavex {

/// Sees to it that one program runs per user: two would empty each other's working folders. The system's lock ends with
/// the process, however that ends.
class SingleInstance final : public QObject {
    Q_OBJECT
public:
    /// Takes the lock in the user's runtime folder.
    SingleInstance();
    ~SingleInstance() override;

    bool isFirst() const { return lock_ >= 0; }
    /// Asks the first program to come to the front; false when it does not answer.
    bool activateFirst() const;

Q_SIGNALS:
    /// Another program was started and ended in this one's favour.
    void activated();

private:
    int lock_ = -1; ///< file descriptor that holds the lock
    QString socket_;
    QLocalServer server_;
};

} // namespace lumavex
