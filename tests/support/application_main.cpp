// SPDX-License-Identifier: GPL-3.0-or-later
// main() of tests that need Qt's events, and of those that link its widgets.
#ifdef QT_WIDGETS_LIB
#include <QApplication>
#else
#include <QCoreApplication>
#endif

#include <gmock/gmock.h>

int main(int argc, char** argv)
{
    testing::InitGoogleMock(&argc, argv);
#ifdef QT_WIDGETS_LIB
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
#else
    const QCoreApplication application(argc, argv);
#endif
    return RUN_ALL_TESTS();
}
