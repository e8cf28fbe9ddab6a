// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/SoundSettings.h"

#include <QList>
#include <QStringList>

namespace lumavex {

/// The programs that show settings of sound, best first, each with its arguments. `desktops` is XDG_CURRENT_DESKTOP
/// (freedesktop.org, desktop entries): names with colons between them, the most special first.
QList<QStringList> soundSettingsPrograms(const QString& desktops);

/// The sound server's default source, or the ALSA card where no server runs; and of the above programs the first one
/// that is installed.
class DesktopSoundSettings final : public SoundSettings {
public:
    std::optional<QString> nameOfInput() override;
    bool open() override;
};

} // namespace lumavex
