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
    QStringList buttons;     ///< at least one; the first is the default, the last is what closing the alert means
    enum class Reader {
        Anybody,
        User, ///< a run without a user says the same in its report
    } reader = Reader::Anybody;
};

struct SavePanel {
    QString title;
    QString directory; ///< where the panel opens; empty for the user's videos, pictures or home folder
    QString nameField; ///< the proposed file name
    QString filter;    ///< e.g. "Movies (*.mov)"; every other type is allowed too
    QString ending;    ///< e.g. "mov": of a name that is given without one
};

/// What asks or tells the user and waits for the answer. Main thread only; Common timers go on firing meanwhile.
class Dialogs {
public:
    virtual ~Dialogs() = default;
    /// Shows the alert modally; the index of the button chosen.
    virtual int runAlert(const Alert& alert) = 0;
    /// The path chosen, or nothing when cancelled. An existing file is returned only when the user agreed to replace
    /// it.
    virtual std::optional<QString> runSavePanel(const SavePanel& panel) = 0;
    /// One existing file, or nothing when cancelled. `extensions` without dots.
    virtual std::optional<QString> runOpenPanel(const QString& title, const QStringList& extensions) = 0;
    /// Opens the file or address with the desktop's handler; false when there is none.
    virtual bool open(const QUrl& url) = 0;
};

} // namespace lumavex
