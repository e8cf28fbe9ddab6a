// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Dialogs.h"

namespace lumavex {

/// Qt's message boxes and file dialogs, and the desktop's handlers for files and addresses.
class QtDialogs final : public Dialogs {
public:
    int runAlert(const Alert& alert) override;
    std::optional<QString> runSavePanel(const SavePanel& panel) override;
    std::optional<QString> runOpenPanel(const QString& title, const QStringList& extensions) override;
    bool open(const QUrl& url) override;
};

} // namespace lumavex
