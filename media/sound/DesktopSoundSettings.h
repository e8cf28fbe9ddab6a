// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/SoundSettings.h"

#include <QList>
#include <QStringList>

namespace lumavex {

/// Programs that show sound settings, best first, each with its arguments. `desktops` is XDG_CURRENT_DESKTOP
/// (freedesktop.org, desktop entries): names separated by colons, the most specific first.
QList<QStringList> soundSettingsPrograms(const QString& desktops);

/// Reads the name of the sound server's default source, or of the ALSA card when no server runs. Opens the first of the
/// above programs that is installed.
class DesktopSoundSettings final : public SoundSettings {
public:
    std::optional<QString> nameOfInput() override;
    bool open() override;
};

} // namespace lumavex
