// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/sound/DesktopSoundSettings.h"

#include "media/sound/SoundServer.h"

#include <QProcess>
#include <QStandardPaths>

#include <array>

namespace lumavex {
namespace {

using namespace std::chrono_literals;

constexpr Nanoseconds kServerPatience = 300ms;

struct DesktopProgram {
    const char* desktop;
    const char* command;
};

/// A desktop's own settings may refuse to run elsewhere, so they are tried only in that desktop.
constexpr std::array kOwnPrograms = {
    DesktopProgram{"GNOME", "gnome-control-center sound"},   DesktopProgram{"Unity", "unity-control-center sound"},
    DesktopProgram{"Budgie", "budgie-control-center sound"}, DesktopProgram{"KDE", "systemsettings kcm_pulseaudio"},
    DesktopProgram{"KDE", "systemsettings5 kcm_pulseaudio"}, DesktopProgram{"KDE", "kcmshell6 kcm_pulseaudio"},
    DesktopProgram{"KDE", "kcmshell5 kcm_pulseaudio"},       DesktopProgram{"X-Cinnamon", "cinnamon-settings sound"},
    DesktopProgram{"Cinnamon", "cinnamon-settings sound"},   DesktopProgram{"MATE", "mate-volume-control"},
    DesktopProgram{"LXQt", "pavucontrol-qt --tab=4"},
};

/// For every desktop; the fourth tab shows the inputs.
constexpr std::array kCommonPrograms = {"pavucontrol --tab=4", "pavucontrol-qt --tab=4", "pwvucontrol"};

} // namespace

QList<QStringList> soundSettingsPrograms(const QString& desktops)
{
    QList<QStringList> programs;
    const auto add = [&programs](const char* command) {
        const QStringList words = QString::fromLatin1(command).split(QLatin1Char(' '));
        if (!programs.contains(words))
            programs.append(words);
    };
    const auto names = desktops.split(QLatin1Char(':'));
    for (const QString& name : names) {
        for (const DesktopProgram& program : kOwnPrograms) {
            if (name.compare(QLatin1String(program.desktop), Qt::CaseInsensitive) == 0)
                add(program.command);
        }
    }
    for (const char* command : kCommonPrograms)
        add(command);
    return programs;
}

std::optional<QString> DesktopSoundSettings::nameOfInput()
{
    if (auto input = askSoundServer(kServerPatience))
        return std::move(input->name);
    return firstAlsaInput();
}

bool DesktopSoundSettings::open()
{
    const auto programs = soundSettingsPrograms(qEnvironmentVariable("XDG_CURRENT_DESKTOP"));
    for (const QStringList& program : programs) {
        const QString executable = QStandardPaths::findExecutable(program.first());
        if (executable.isEmpty())
            continue;
        QProcess process;
        process.setProgram(executable);
        process.setArguments(program.sliced(1));
        // The program's output is no message of ours.
        process.setStandardOutputFile(QProcess::nullDevice());
        process.setStandardErrorFile(QProcess::nullDevice());
        process.setStandardInputFile(QProcess::nullDevice());
        if (process.startDetached())
            return true;
    }
    return false;
}

} // namespace lumavex
