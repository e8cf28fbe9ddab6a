// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/qt/QtDialogs.h"

#include <QApplication>
#include <QDesktopServices>
#include <QFileDialog>
#include <QMainWindow>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>

namespace lumavex {

namespace {

/// Parent of a dialog: the modal window in use, else the visible main window, else none. Timers continue beneath a
/// dialog and may remove any other window, which would destroy its dialog, too.
QWidget* parentWindow()
{
    if (QWidget* modal = QApplication::activeModalWidget())
        return modal;
    const auto windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows)
        if (window->isVisible() && qobject_cast<QMainWindow*>(window))
            return window;
    return nullptr;
}

QString panelFolder(const QString& wanted)
{
    if (!wanted.isEmpty())
        return wanted;
    const QString movies = QStandardPaths::writableLocation(QStandardPaths::MoviesLocation);
    return QFileInfo(movies).isDir() ? movies : QStandardPaths::writableLocation(QStandardPaths::HomeLocation);
}

bool agreesToReplace(const QString& path)
{
    const QString question = QApplication::translate("Dialogs", "%1 exists already. Replace it?");
    return QMessageBox::question(parentWindow(), QApplication::applicationName(), question.arg(path),
                                 QMessageBox::Yes | QMessageBox::No, QMessageBox::No)
           == QMessageBox::Yes;
}

} // namespace

int QtDialogs::runAlert(const Alert& alert)
{
    QMessageBox box(parentWindow());
    box.setIcon(alert.messageText == QLatin1String("Success") ? QMessageBox::Information : QMessageBox::Warning);
    box.setWindowTitle(QApplication::applicationName());
    box.setTextFormat(Qt::PlainText);
    box.setText(alert.messageText);
    box.setInformativeText(alert.informativeText);
    QList<QAbstractButton*> buttons;
    for (const QString& title : alert.buttons)
        buttons.append(box.addButton(title, QMessageBox::ActionRole));
    box.setDefaultButton(qobject_cast<QPushButton*>(buttons.first()));
    box.setEscapeButton(buttons.last());
    box.exec();
    const auto chosen = buttons.indexOf(box.clickedButton());
    return static_cast<int>(chosen < 0 ? buttons.size() - 1 : chosen);
}

std::optional<QString> QtDialogs::runSavePanel(const SavePanel& panel)
{
    QFileDialog dialog(parentWindow(), panel.title, panelFolder(panel.directory));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setNameFilters({panel.filter, QApplication::translate("Dialogs", "All files (*)")});
    dialog.selectFile(panel.nameField);
    while (dialog.exec() == QDialog::Accepted && !dialog.selectedFiles().isEmpty()) {
        // The dialog has asked about the name as entered, without the ending, and a desktop's own dialog does the same.
        const QString given = dialog.selectedFiles().constFirst();
        if (!QFileInfo(given).suffix().isEmpty())
            return given;
        const QString named = given + (given.endsWith(u'.') ? QString() : QStringLiteral(".")) + panel.ending;
        if (!QFileInfo::exists(named) || agreesToReplace(named))
            return named;
    }
    return std::nullopt;
}

std::optional<QString> QtDialogs::runOpenPanel(const QString& title, const QStringList& extensions)
{
    QFileDialog dialog(parentWindow(), title);
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setFileMode(QFileDialog::ExistingFile);
    QStringList patterns;
    for (const QString& extension : extensions)
        patterns.append(QStringLiteral("*.") + extension);
    dialog.setNameFilter(patterns.join(u' '));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return std::nullopt;
    return dialog.selectedFiles().constFirst();
}

bool QtDialogs::open(const QUrl& url)
{
    return QDesktopServices::openUrl(url);
}

} // namespace lumavex
