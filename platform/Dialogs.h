// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <QUrl>

#include <optional>

namespace lumavex {

struct Alert {
    QString messageText;     ///< short, e.g. "Error"
    QString informativeText; ///< what happened and what to do next
    QStringList buttons;     ///< at least one; the first is the default, closing the alert means the last
    enum class Reader {
        Anybody,
        User, ///< a run without a user has the same text in its report
    } reader = Reader::Anybody;
};

struct SavePanel {
    QString title;
    QString directory; ///< initial folder; empty for the user's videos, pictures or home folder
    QString nameField; ///< the proposed file name
    QString filter;    ///< e.g. "Movies (*.mov)"; all other types are allowed, too
    QString ending;    ///< e.g. "mov": appended to a name without one
};

/// Asks or informs the user and waits for the answer. Main thread only; Common timers continue to fire meanwhile.
class Dialogs {
public:
    virtual ~Dialogs() = default;
    /// Shows the alert modally and returns the index of the chosen button.
    virtual int runAlert(const Alert& alert) = 0;
    /// The chosen path, or std::nullopt when cancelled. An existing file is returned only if the user agreed to replace
    /// it.
    virtual std::optional<QString> runSavePanel(const SavePanel& panel) = 0;
    /// One existing file, or std::nullopt when cancelled. `extensions` without dots.
    virtual std::optional<QString> runOpenPanel(const QString& title, const QStringList& extensions) = 0;
    /// Opens the file or address with the desktop's handler; false when there is none.
    virtual bool open(const QUrl& url) = 0;
};

} // namespace lumavex
