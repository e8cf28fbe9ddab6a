// SPDX-License-Identifier: GPL-3.0-or-later
#include <QApplication>

#include <gmock/gmock.h>

#include <csignal>

int main(int argc, char** argv)
{
    testing::InitGoogleMock(&argc, argv);
    // A file-size limit stands in for a full disk; the failed write is to be seen, not the signal.
    std::signal(SIGXFSZ, SIG_IGN);
    const QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
