// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/loader/MediaLibrary.h"

#include "platform/PlatformText.h"

#include <QCoreApplication>
#include <QFile>

#include <dlfcn.h>

#include <string_view>

namespace lumavex {
namespace {

/// Paths from the program's folder to the library: as built and as installed.
constexpr const char* kSearchPaths[] = {"lumavex-media.so", LUMAVEX_LIBDIR_FROM_BINDIR "/lumavex-media.so"};

/// Path of the library, or the path at which it should be.
QString path()
{
    const QString folder = QCoreApplication::applicationDirPath() + u'/';
    for (const char* const place : kSearchPaths)
        if (const QString path = folder + QLatin1String(place); QFile::exists(path))
            return path;
    return folder + QLatin1String(kSearchPaths[1]);
}

MediaLibrary refused(const QString& reason)
{
    return {nullptr, PlatformText::tr("Lumavex is not installed completely, so there is neither "
                                      "camera nor sound. Install it again. (%1)")
                         .arg(reason)};
}

} // namespace

MediaLibrary loadMediaLibrary(const QString& path)
{
    void* const library = dlopen(QFile::encodeName(path).constData(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    void* const symbol = library ? dlsym(library, kMediaBackendsSymbol) : nullptr;
    if (!symbol)
        return refused(QString::fromLocal8Bit(dlerror()));
    const auto* const backends = static_cast<const MediaBackends*>(symbol);
    if (std::string_view(backends->stamp) != LUMAVEX_INTERFACE_STAMP)
        return refused(PlatformText::tr("%1 is of another version").arg(path));
    return {backends, {}};
}

const MediaLibrary& installedMediaLibrary()
{
    static const MediaLibrary library = loadMediaLibrary(path());
    return library;
}

} // namespace lumavex
