// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

namespace lumavex {

/// SIGINT and SIGTERM as a Qt signal on the main thread (signal(7): a handler may do next to nothing). One object.
class TerminationSignals final : public QObject {
    Q_OBJECT
public:
    TerminationSignals();

Q_SIGNALS:
    void terminationRequested();
};

} // namespace lumavex
