// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/SingleInstance.h"

#include <QFile>
#include <QLocalSocket>
#include <QStandardPaths>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace lumavex {

SingleInstance::SingleInstance()
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    socket_ = folder + QStringLiteral("/lumavex.socket");
    const int file = open(QFile::encodeName(folder + QStringLiteral("/lumavex.lock")).constData(),
                          O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (file < 0)
        return;
    if (flock(file, LOCK_EX | LOCK_NB) != 0) {
        close(file);
        return;
    }
    lock_ = file;
    QLocalServer::removeServer(socket_); // a killed program leaves its socket behind
    server_.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&server_, &QLocalServer::newConnection, this, [this] {
        server_.nextPendingConnection()->deleteLater();
        Q_EMIT activated();
    });
    server_.listen(socket_);
}

SingleInstance::~SingleInstance()
{
    server_.close();
    if (lock_ >= 0)
        close(lock_);
}

bool SingleInstance::activateFirst() const
{
    QLocalSocket socket;
    socket.connectToServer(socket_);
    return socket.waitForConnected(2000);
}

} // namespace lumavex
