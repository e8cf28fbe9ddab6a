// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/StandardStreams.h"

#include "app/options/AppText.h"

#include <fcntl.h>
#include <unistd.h>

namespace lumavex {

namespace {

constexpr const char* eraseLine = "\r\033[K";

FileDescriptor duplicate(int descriptor)
{
    return FileDescriptor(::fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

} // namespace

void openClosedStandardStreams()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (::fcntl(descriptor, F_GETFD) == -1)
            ::open("/dev/null", O_RDWR); // gets the lowest free number
}

StandardStreams::StandardStreams()
    : output_(duplicate(STDOUT_FILENO)), error_(duplicate(STDERR_FILENO)),
      errorIsTerminal_(::isatty(STDERR_FILENO) == 1)
{
}

void StandardStreams::print(const QString& line)
{
    output_.add((line + u'\n').toLocal8Bit().toStdString());
}

void StandardStreams::tell(const QString& line)
{
    const int missed = missed_.exchange(0);
    QString text = line + u'\n';
    if (missed > 0)
        text.prepend(AppText::tr("lumavex: %1 lines are missing here, since nobody "
                                 "read them.\n")
                         .arg(missed));
    if (!error_.add(text.toLocal8Bit().toStdString()))
        missed_ += missed + 1;
}

void StandardStreams::showProgress(const QString& text)
{
    if (errorIsTerminal_ && error_.isIdle())
        error_.add(eraseLine + text.toLocal8Bit().toStdString());
}

void StandardStreams::endProgress()
{
    if (errorIsTerminal_)
        error_.add(eraseLine);
}

void StandardStreams::finish()
{
    constexpr std::chrono::seconds patience{2};
    error_.waitUntilIdle(patience);
    output_.waitUntilIdle(patience);
}

} // namespace lumavex
