// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"

#include "app/Window_Main.h"
#include "recording/WorkingFolders.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

#include <algorithm>

namespace lumavex {

namespace {

/// Writes the picture atomically, readable by the user alone. Returns an empty text, or the reason for a failure.
QString writePng(const CVPixelBufferRef& frame, const QString& path)
{
    if (!frame)
        return AppDelegate::tr("There is not enough memory to compose it.");
    if (QFileInfo(path).isSymLink())
        QFile::remove(path); // a symbolic link would be followed
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || !file.setPermissions(QFile::ReadOwner | QFile::WriteOwner))
        return file.errorString();
    if (!imageFromPixelBuffer(*frame).save(&file, "PNG"))
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
        window_.showMessage(
            MessageTopic::Picture,
            {tr("The picture is taken as soon as the preview is shown."), {}, Message::Kind::Information});
}

void AppDelegate::savePicture(const CVPixelBufferRef& frame)
{
    window_.withdrawMessage(MessageTopic::Picture); // the announcement of the picture
    compose.s_Saved_Take_Picture =
        pathIn(application.s_Picture_Folder, dateStamp(QDateTime::currentDateTime()) + QStringLiteral(".png"));
    // An attended run shows the picture for a second.
    const Nanoseconds due =
        platform_.runLoop->now() + (options_.isUnattended() ? Nanoseconds(0) : std::chrono::seconds(1));
    // Compression takes longer than a frame, so a worker thread does it, one picture after the other: of two pictures
    // with the same name the later one must remain.
    pictureWriter_.add([this, frame, path = compose.s_Saved_Take_Picture, due] {
        const QString problem = writePng(frame, path);
        const TakenPicture picture{path, problem.isEmpty() ? nullptr : frame};
        QMetaObject::invokeMethod(
            this, [this, picture, problem, due] { pictureWritten(picture, problem, due); }, Qt::QueuedConnection);
    });
}

void AppDelegate::pictureWritten(const TakenPicture& picture, const QString& problem, Nanoseconds due)
{
    if (!problem.isEmpty()) {
        const Alert alert{tr("Error"), tr("The picture could not be written. %1").arg(problem),
                          picture.unwritten ? QStringList{tr("Save Elsewhere…"), tr("Close")}
                                            : QStringList{tr("Close")}};
        if (platform_.dialogs->runAlert(alert) != 0 || !picture.unwritten) {
            Q_EMIT pictureFinished({});
            return;
        }
    }
    std::erase_if(compose.takenPictures, [&](const TakenPicture& each) { return each.path == picture.path; });
    compose.takenPictures.push_back(picture);
    compose.timer_Save_Picture =
        platform_.runLoop->scheduleOnce({1, 1}, [this](const TimerFiring&) { Timer_Save_Picture_Routine(); });
    platform_.runLoop->setNextDeadline(compose.timer_Save_Picture, due);
}

void AppDelegate::Timer_Save_Picture_Routine()
{
    if (compose.offersPicture)
        return; // the open panel is followed by those for the pictures taken meanwhile
    compose.offersPicture = true;
    while (!compose.takenPictures.empty()) {
        const TakenPicture newest = compose.takenPictures.back();
        compose.takenPictures.pop_back();
        Q_EMIT pictureFinished(offerPicture(newest));
    }
    compose.offersPicture = false;
}

QString AppDelegate::offerPicture(const TakenPicture& picture)
{
    SavePanel panel;
    panel.title = QStringLiteral("Select a folder to save the captured image");
    panel.nameField = QFileInfo(picture.path).fileName();
    panel.filter = tr("Pictures (*.png)");
    panel.ending = QStringLiteral("png");
    panel.directory = picturesFolder();
    for (;;) {
        const std::optional<QString> path = platform_.dialogs->runSavePanel(panel);
        if (!path)
            return {};
        const QString problem = placePicture(picture, *path);
        if (problem.isEmpty()) {
            tellPictureSaved(*path);
            return *path;
        }
        const QString kept = picture.unwritten
                                 ? QString()
                                 : u' ' + tr("It stays as %1 until Lumavex is started again.").arg(picture.path);
        const Alert alert{tr("Error"),
                          tr("The picture could not be saved there. %1").arg(problem) + kept,
                          {tr("Save Elsewhere…"), tr("Close")}};
        if (platform_.dialogs->runAlert(alert) != 0)
            return {};
    }
}

QString AppDelegate::placePicture(const TakenPicture& picture, const QString& path)
{
    if (isInWorkingFolder(path, application))
        return tr("Lumavex empties this folder at every start.");
    QString problem;
    if (picture.unwritten)
        problem = writePng(picture.unwritten, path);
    else
        problem = moveFile(picture.path, path, ExistingDestination::Replace).error;
    if (problem.isEmpty())
        giveOrdinaryMode(path);
    return problem;
}

void AppDelegate::tellPictureSaved(const QString& path)
{
    const int answer = platform_.dialogs->runAlert({QStringLiteral("Success"),
                                                    QStringLiteral("Image file saved successfully."),
                                                    {QStringLiteral("View Image File"), QStringLiteral("Close")},
                                                    Alert::Reader::User});
    if (answer == 0)
        openPage(QUrl::fromLocalFile(path));
}

} // namespace lumavex
