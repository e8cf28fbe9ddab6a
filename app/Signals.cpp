// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Signals.h"

#include <QSocketNotifier>

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace lumavex {

namespace {

int wakeUp[2] = {-1, -1}; ///< pipe from the handler to the event loop

extern "C" void onTerminationSignal(int)
{
    const char byte = 1;
    [[maybe_unused]] const auto written = write(wakeUp[1], &byte, 1);
}

} // namespace

void ignoreWriteSignals()
{
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

TerminationSignals::TerminationSignals()
{
    if (pipe2(wakeUp, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    auto* notifier = new QSocketNotifier(wakeUp[0], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this] {
        char bytes[16];
        while (read(wakeUp[0], bytes, sizeof bytes) > 0) {
        }
        Q_EMIT terminationRequested();
    });
    struct sigaction action = {};
    action.sa_handler = onTerminationSignal;
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    struct sigaction inherited = {};
    if (sigaction(SIGHUP, nullptr, &inherited) == 0 && inherited.sa_handler != SIG_IGN)
        sigaction(SIGHUP, &action, nullptr);
}

} // namespace lumavex
