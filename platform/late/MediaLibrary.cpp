// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/late/MediaLibrary.h"

#include <QCoreApplication>
#include <QFile>

#include <dlfcn.h>

namespace lumavex {
namespace {

/// From the program's folder to the library's: where both are installed, and where both are built.
constexpr const char* kPlaces[] = {LUMAVEX_LIBDIR_FROM_BINDIR "/lumavex-media.so", "lumavex-media.so"};

/// Where the library is, else where it should be.
QString path()
{
    const QString folder = QCoreApplication::applicationDirPath() + u'/';
    for (const char* const place : kPlaces)
        if (const QString path = folder + QLatin1String(place); QFile::exists(path))
            return path;
    return folder + QLatin1String(kPlaces[0]);
}

MediaLibrary load()
{
    void* const library = dlopen(QFile::encodeName(path()).constData(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    void* const symbol = library ? dlsym(library, kMediaBackendsSymbol) : nullptr;
    if (symbol)
        return {static_cast<const MediaBackends*>(symbol), {}};
    const QString reason = QString::fromLocal8Bit(dlerror());
    const QString trouble =
        QCoreApplication::translate("MediaLibrary", "Lumavex is not installed completely, so there is neither camera "
                                                    "nor sound. Install it again. (%1)")
            .arg(reason);
    qWarning("%s", qUtf8Printable(trouble));
    return {nullptr, trouble};
}

} // namespace

const MediaLibrary& installedMediaLibrary()
{
    static const MediaLibrary library = load();
    return library;
}

} // namespace lumavex
