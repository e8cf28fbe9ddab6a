// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"

#include "app/Window_Main.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QStandardPaths>

namespace lumavex {

namespace {

/// The help book's first page: installed beside the program or in the data folders, or in the source tree when the
/// program is not installed. Empty when there is none.
QString helpBook()
{
    const QString page = QStringLiteral("LumavexHelp.help/index.html");
    const QString beside = QCoreApplication::applicationDirPath() + QStringLiteral("/../share/lumavex/") + page;
    if (QFileInfo::exists(beside))
        return QFileInfo(beside).canonicalFilePath();
    const QString installed =
        QStandardPaths::locate(QStandardPaths::GenericDataLocation, QStringLiteral("lumavex/") + page);
    if (!installed.isEmpty())
        return installed;
    const QString inTree = QCoreApplication::applicationDirPath() + QStringLiteral("/../../resources/help/") + page;
    return QFileInfo::exists(inTree) ? QFileInfo(inTree).canonicalFilePath() : QString();
}

} // namespace

void AppDelegate::OnToolbarHelp()
{
    const QString page = helpBook();
    if (page.isEmpty())
        window_.showMessage(tr("The help book is not installed."));
    else
        openPage(QUrl::fromLocalFile(page));
}

void AppDelegate::OnMenuAppHomePage()
{
    openPage(QUrl(QStringLiteral("https://lumavex.org/")));
}

void AppDelegate::OnMenuCompanyHomePage()
{
    openPage(QUrl(QStringLiteral("https://lumavex.org/about/")));
}

void AppDelegate::OnMenuPrivacyPolicy()
{
    openPage(QUrl(QStringLiteral("https://lumavex.org/privacy/")));
}

void AppDelegate::OnMenuSupportTicket()
{
    openPage(QUrl(QStringLiteral("https://lumavex.org/support/")));
}

void AppDelegate::openPage(const QUrl& address)
{
    if (!platform_.dialogs->open(address))
        window_.showMessage(tr("No application is installed that opens %1.").arg(address.toDisplayString()));
}

} // namespace lumavex
