// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"

#include "app/Window_Main.h"
#include "recording/WorkingFolders.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>
#include <QThreadPool>

namespace lumavex {

namespace {

/// Writes the picture in one step, for the user alone. Empty, or why not.
QString writePng(const QImage& picture, const QString& path)
{
    if (QFileInfo(path).isSymLink())
        QFile::remove(path); // it would be followed
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || !file.setPermissions(QFile::ReadOwner | QFile::WriteOwner))
        return file.errorString();
    if (!picture.save(&file, "PNG"))
        return file.errorString();
    return file.commit() ? QString() : file.errorString();
}

QString picturesFolder()
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    return QFileInfo(folder).isDir() ? folder : QString();
}

} // namespace

void AppDelegate::OnToolbarTakePicture()
{
    compose.b_Take_Picture = true;
    if (!compose.windowPreview)
        window_.showMessage(tr("The picture is taken as soon as the preview is shown."));
}

void AppDelegate::savePicture(const CVPixelBufferRef& frame)
{
    compose.s_Saved_Take_Picture =
        pathIn(application.s_Picture_Folder, dateStamp(QDateTime::currentDateTime()) + QStringLiteral(".png"));
    // Compressing takes longer than a frame lasts, so it is done beside the main thread.
    QThreadPool::globalInstance()->start([this, frame, path = compose.s_Saved_Take_Picture] {
        const QString problem = writePng(imageFromPixelBuffer(*frame), path);
        QMetaObject::invokeMethod(
            this, [this, problem] { pictureWritten(problem); }, Qt::QueuedConnection);
    });
}

void AppDelegate::pictureWritten(const QString& problem)
{
    if (!problem.isEmpty()) {
        platform_.dialogs->runAlert(
            {tr("Error"), tr("The picture could not be written. %1").arg(problem), {tr("Close")}});
        return;
    }
    compose.timer_Save_Picture =
        platform_.runLoop->scheduleOnce({1, 1}, [this](const TimerFiring&) { Timer_Save_Picture_Routine(); });
}

void AppDelegate::Timer_Save_Picture_Routine()
{
    const QString picture = compose.s_Saved_Take_Picture;
    SavePanel panel;
    panel.title = QStringLiteral("Select a folder to save the captured image");
    panel.nameField = QFileInfo(picture).fileName();
    panel.filter = tr("Pictures (*.png)");
    panel.directory = picturesFolder();
    const std::optional<QString> path = platform_.dialogs->runSavePanel(panel);
    if (!path)
        return;
    const MoveResult moved = moveFile(picture, *path, ExistingDestination::Replace);
    if (moved.outcome != MoveOutcome::Moved) {
        platform_.dialogs->runAlert({tr("Error"),
                                     tr("The picture could not be saved there. %1 It stays in %2 until Lumavex is "
                                        "started again.")
                                         .arg(moved.error, picture),
                                     {tr("Close")}});
        return;
    }
    const int answer = platform_.dialogs->runAlert({QStringLiteral("Success"),
                                                    QStringLiteral("Image file saved successfully."),
                                                    {QStringLiteral("View Image File"), QStringLiteral("Close")}});
    if (answer == 0)
        openPage(QUrl::fromLocalFile(*path));
}

} // namespace lumavex
