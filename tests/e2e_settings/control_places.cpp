// SPDX-License-Identifier: GPL-3.0-or-later
// Prints, for every control of the settings dialog, a line "PAGE NAME X Y": where in the dialog's window it is clicked.
// Run with the environment of the program, it is laid out as the program's own dialog is.
#include "settings_dialog/Window_Configurations.h"
#include "tests/fakes/FakeDialogs.h"

#include <QApplication>
#include <QCheckBox>
#include <QTabBar>
#include <QTabWidget>

#include <cstdio>

using namespace lumavex;

namespace {

void print(int page, const QString& name, const QPoint& middle)
{
    std::printf("%d %s %d %d\n", page, qPrintable(name), middle.x(), middle.y());
}

/// Where a click works the control: of a check box its text and what is before it, and no more.
QPoint clickable(const QWidget& control)
{
    const QPoint middle = control.rect().center();
    return qobject_cast<const QCheckBox*>(&control) ? QPoint(12, middle.y()) : middle;
}

void printChildren(int page, const QWidget& parent, const QWidget& window)
{
    for (const QWidget* control : parent.findChildren<QWidget*>())
        if (control->isVisible() && !control->objectName().isEmpty() && !control->objectName().startsWith(u"qt_"))
            print(page, control->objectName(), control->mapTo(&window, clickable(*control)));
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication::setHighDpiScaleFactorRoundingPolicy(Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
    QApplication application(argc, argv);
    FakeDialogs dialogs;
    Window_Configurations window(nullptr, dialogs, {}, {}, {{QStringLiteral("Do not connect to Camera")}, {}, 192},
                                 [](const DialogSettings&, SettingsSubject) { return std::vector<FrameOutline>(); });
    window.show();
    QApplication::processEvents();
    auto* tabs = window.findChild<QTabWidget*>();
    const auto* bar = tabs->findChild<QTabBar*>();
    for (int page = 0; page < tabs->count(); ++page) {
        tabs->setCurrentIndex(page);
        QApplication::processEvents();
        print(page, QStringLiteral("tab"), bar->mapTo(&window, bar->tabRect(page).center()));
        printChildren(page, *tabs->currentWidget(), window);
    }
    for (const char* button : {"OK", "Cancel"})
        for (const auto* found : window.findChildren<QAbstractButton*>())
            if (found->text().remove(u'&') == QLatin1String(button))
                print(-1, QLatin1String(button), found->mapTo(&window, found->rect().center()));
    return 0;
}
