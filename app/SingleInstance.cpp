// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/SingleInstance.h"

#include <QFile>
#include <QStandardPaths>

#include <chrono>
#include <fcntl.h>
#include <optional>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

namespace lumavex {

namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 2s;
constexpr auto kBetweenAttempts = 20ms;
constexpr int kWaiting = 16; ///< number of programs that may start at the same time

/// std::nullopt when the folder's name is too long for a socket address.
std::optional<sockaddr_un> addressIn(const std::string& folder)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = folder + "/lumavex.socket";
    if (path.size() >= sizeof address.sun_path)
        return {};
    path.copy(address.sun_path, path.size());
    return address;
}

/// Non-blocking: neither side waits in a system call.
FileDescriptor makeSocket()
{
    return FileDescriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

const sockaddr* general(const sockaddr_un& address)
{
    return reinterpret_cast<const sockaddr*>(&address);
}

} // namespace

SingleInstance::SingleInstance()
    : folder_(QFile::encodeName(QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation)).toStdString())
{
    FileDescriptor file(::open((folder_ + "/lumavex.lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (!file.isOpen() || ::flock(file.get(), LOCK_EX | LOCK_NB) != 0)
        return;
    lock_ = std::move(file);
    listen();
}

void SingleInstance::listen()
{
    const auto address = addressIn(folder_);
    FileDescriptor server = makeSocket();
    if (!address || !server.isOpen())
        return;
    ::unlink(address->sun_path); // a killed program leaves its socket behind
    // The folder is private to the user; if it is not, the socket still is: Linux requires write permission to connect.
    if (::bind(server.get(), general(*address), sizeof *address) != 0 || ::chmod(address->sun_path, 0600) != 0
        || ::listen(server.get(), kWaiting) != 0)
        return;
    server_ = std::move(server);
    calls_ = std::make_unique<QSocketNotifier>(server_.get(), QSocketNotifier::Read);
    connect(calls_.get(), &QSocketNotifier::activated, this, &SingleInstance::answer);
}

void SingleInstance::answer()
{
    const FileDescriptor caller(::accept4(server_.get(), nullptr, nullptr, SOCK_CLOEXEC));
    if (caller.isOpen())
        Q_EMIT activated();
}

bool SingleInstance::activateFirst() const
{
    const auto address = addressIn(folder_);
    const FileDescriptor socket = makeSocket();
    if (!address || !socket.isOpen())
        return false;
    // The first program may have taken the lock but not yet begun to listen.
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    while (::connect(socket.get(), general(*address), sizeof *address) != 0) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(kBetweenAttempts);
    }
    return true;
}

} // namespace lumavex
