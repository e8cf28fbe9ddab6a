// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"
#include "app/DesktopStyle.h"
#include "app/Icons.h"
#include "app/Lists.h"
#include "app/SettingsNotice.h"
#include "app/Signals.h"
#include "app/SingleInstance.h"
#include "app/StandardStreams.h"
#include "app/Unattended.h"
#include "app/Window_Main.h"
#include "app/awaitCameras.h"
#include "app/connectCommands.h"
#include "app/options/CommandLine.h"
#include "app/options/layeredSettings.h"

#include <QApplication>
#include <QLoggingCategory>
#include <QTimer>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <utility>

namespace {

using namespace lumavex;

/// Created first and never destroyed, since messages arrive until the very end.
StandardStreams* streams = nullptr;

/// To be called before Qt ends the program because the display is lost; returns the exit status. Empty while there is
/// nothing to save.
std::function<int()> onScreenLoss;

/// True when the logging rules pass warnings of no category.
std::atomic<bool> warningsAreWanted = true;
QLoggingCategory::CategoryFilter rulesFilter = nullptr;

bool isWithoutCategory(const char* category)
{
    return !category || std::strcmp(category, "default") == 0;
}

/// Qt reports the loss of the display as such a warning, so the message handler must receive them whatever the rules
/// say.
void filterCategory(QLoggingCategory* category)
{
    rulesFilter(category);
    if (!isWithoutCategory(category->categoryName()))
        return;
    warningsAreWanted = category->isWarningEnabled();
    category->setEnabled(QtWarningMsg, true);
}

[[noreturn]] void endAtOnce(int status)
{
    streams->finish();
    std::_Exit(status);
}

/// Qt ends the program itself when it cannot reach the display; the user gets a message instead of an abort. When the
/// display is lost later, Qt only logs a message before it ends the program, which is the only moment to save a
/// recording.
void onMessage(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    if (type == QtFatalMsg && message.contains(QLatin1String("platform plugin"))) {
        const bool onlyWayland =
            qEnvironmentVariableIsEmpty("DISPLAY") && !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
        streams->tell(onlyWayland
                          ? QStringLiteral("lumavex: This is a Wayland session without XWayland, where Lumavex has no "
                                           "windows and the screen cannot be recorded yet. Log in to an X11 session.")
                          : QStringLiteral("lumavex: There is no graphical display to show windows on, or it cannot be "
                                           "reached. Start Lumavex in a desktop session, or set DISPLAY."));
        endAtOnce(1);
    }
    if (type == QtWarningMsg && message.startsWith(QLatin1String("The X11 connection broke")) && onScreenLoss) {
        streams->tell(QStringLiteral("lumavex: The X server is gone."));
        endAtOnce(std::exchange(onScreenLoss, {})());
    }
    // Debug and information messages are printed only from our own categories, which are off by default.
    const bool trouble = type != QtDebugMsg && type != QtInfoMsg;
    const bool wanted =
        trouble ? type != QtWarningMsg || warningsAreWanted || !isWithoutCategory(context.category)
                : !isWithoutCategory(context.category) && QByteArrayView(context.category).startsWith("lumavex.");
    if (wanted)
        streams->tell(message);
    if (type == QtFatalMsg) {
        streams->finish();
        std::abort();
    }
}

int fail(const QString& message)
{
    streams->tell(QStringLiteral("lumavex: ") + message);
    return 1;
}

int run(const LaunchOptions& options, Platform& platform, SingleInstance& instance)
{
    const bool unattended = options.isUnattended();
    if (unattended)
        platform.dialogs = std::make_unique<UnattendedDialogs>(options, *streams);
    if (const QString trouble = platform.screen->trouble(); !trouble.isEmpty()) {
        if (!unattended)
            platform.dialogs->runAlert({QStringLiteral("Error"), trouble, {QStringLiteral("Close")}});
        return fail(trouble);
    }
    const std::unique_ptr<UserDefaults> stored = std::move(platform.userDefaults);
    const auto cameraNames = [&] {
        return unattended ? awaitCameras(*platform.cameras, *platform.runLoop,
                                         [](const QStringList& names) { return !names.isEmpty(); })
                          : platform.cameras->names();
    };
    auto layered = layeredSettings(*stored, options, cameraNames);
    LayeredUserDefaults& settings = *layered;
    platform.userDefaults = std::move(layered);
    const std::unique_ptr<UserDefaults> storedChoices = std::move(platform.moreSettings);
    auto layeredMore = layeredChoices(*storedChoices, options);
    LayeredUserDefaults& choices = *layeredMore;
    platform.moreSettings = std::move(layeredMore);

    Window_Main window;
    AppDelegate app(platform, window, options);
    if (const QString problem = app.openStatistics(); !problem.isEmpty())
        return fail(problem);
    SettingsNotice settingsNotice(app, window, *stored, *storedChoices);
    for (LayeredUserDefaults* store : {&settings, &choices})
        store->setWriteHandler([&settingsNotice] { settingsNotice.written(); });
    connectCommands(window, app);
    app.awakeFromNib();
    if (!app.applicationDidFinishLaunching())
        return unattended ? 1 : 0;
    settings.startingIsOver();
    settingsNotice.tellUnread();
    // Set late, so that the window does not wait for its icon.
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/org.lumavex.Lumavex.svg")));

    TerminationSignals signals;
    std::unique_ptr<UnattendedRun> unattendedRun;
    if (unattended) {
        unattendedRun =
            std::make_unique<UnattendedRun>(app, *platform.runLoop, *streams, options, platform.screen->limitation());
        QTimer::singleShot(0, unattendedRun.get(), &UnattendedRun::begin);
        QObject::connect(&signals, &TerminationSignals::terminationRequested, unattendedRun.get(),
                         &UnattendedRun::endEarly);
    } else {
        QObject::connect(&signals, &TerminationSignals::terminationRequested, &app, &AppDelegate::Terminate_App);
        QObject::connect(&instance, &SingleInstance::activated, &window, [&window] {
            window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
            window.show();
            window.raise();
            window.activateWindow();
        });
    }
    onScreenLoss = [&app, &unattendedRun] {
        app.finishWithoutScreen();
        return unattendedRun ? unattendedRun->exitStatus() : 1;
    };
    const int status = QApplication::exec();
    onScreenLoss = {};
    return status;
}

int start(int argc, char* argv[])
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    const CommandLine commandLine = parseCommandLine(arguments);
    if (commandLine.exitStatus) {
        std::fputs(qUtf8Printable(commandLine.text), *commandLine.exitStatus == 0 ? stdout : stderr);
        return *commandLine.exitStatus;
    }
    const LaunchOptions& options = commandLine.options;
    if (!commandLine.note.isEmpty())
        streams->tell(QStringLiteral("lumavex: ") + commandLine.note);
    if (options.isUnattended())
        if (const QString problem = outputProblem(options); !problem.isEmpty())
            return fail(problem);

    ignoreWriteSignals();
    qInstallMessageHandler(onMessage);
    rulesFilter = QLoggingCategory::installFilter(nullptr); // the next call already uses it
    QLoggingCategory::installFilter(filterCategory);
    // Screen and windows are read through X11, so the program's own windows must be X11 windows, too.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "xcb");
    QApplication::setHighDpiScaleFactorRoundingPolicy(Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Lumavex"));
    QApplication::setApplicationVersion(QStringLiteral(LUMAVEX_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("org.lumavex.Lumavex"));
    QApplication::setStyle(new DesktopStyle);
    QApplication::setQuitOnLastWindowClosed(false); // closing an alert while the main window is hidden must not end the
                                                    // program

    if (options.list != LaunchOptions::List::Nothing) {
        Platform platform = createPlatform();
        return printList(options.list, platform);
    }
    SingleInstance instance;
    if (!instance.isFirst()) {
        // Activating the first program's window is not requested here and might put it into that program's movie.
        if (options.recordSeconds)
            return fail(QStringLiteral("Lumavex runs already. End it first, or record with its window."));
        if (options.isUnattended())
            return fail(QStringLiteral("Lumavex runs already. End it first, or take the picture with its window."));
        if (!instance.activateFirst())
            return fail(QStringLiteral("Another Lumavex runs already, but does not answer."));
        return arguments.isEmpty() ? 0
                                   : fail(QStringLiteral("Lumavex runs already, so the options were ignored. End it "
                                                         "first to start it with them."));
    }
    Platform platform = createPlatform();
    return run(options, platform, instance);
}

} // namespace

int main(int argc, char* argv[])
{
    openClosedStandardStreams();
    streams = new StandardStreams;
    std::at_quick_exit([] { streams->finish(); });
    const int status = start(argc, argv);
    streams->finish();
    return status;
}
