// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Lists.h"

#include "base/CameraModes.h"
#include "capture/FrameDimension.h"
#include "capture/WindowList.h"

#include <QStringList>

#include <cstdio>

namespace lumavex {

namespace {

QStringList windowNames(ScreenGrabber& screen)
{
    auto list = std::make_shared<QList<WindowEntry>>();
    WindowListApplierData data(list);
    for (const WindowDescription& window : screen.windowDescriptions(ListOnScreenOnly))
        WindowListApplierFunction(window, data);
    QStringList names;
    for (const WindowEntry& entry : std::as_const(*list))
        if (!belongsToLumavex(entry))
            names.append(Return_Window_Identifier_String(entry) + u'\t' + entry.value(kWindowSizeKey).toString());
    return names;
}

QStringList sizeNames(ScreenGrabber& screen)
{
    const auto catalogue = frameResolutionCatalogue();
    QStringList names;
    for (std::size_t i = 0; i < offeredFrameResolutions(catalogue, screen.sizeOfMainDisplay()); ++i)
        names.append(QStringLiteral("--size %1x%2")
                         .arg(catalogue[i].sizeDimension.width)
                         .arg(catalogue[i].sizeDimension.height));
    for (std::size_t code = 0; code < kCameraPresets.size(); ++code)
        names.append(QStringLiteral("--camera-size %1\t%2").arg(code).arg(QLatin1String(kCameraPresets[code].name)));
    return names;
}

} // namespace

int printList(LaunchOptions::List what, Platform& platform)
{
    if (const QString trouble = platform.screen->trouble();
        what != LaunchOptions::List::Cameras && !trouble.isEmpty()) {
        std::fprintf(stderr, "lumavex: %s\n", qUtf8Printable(trouble));
        return 1;
    }
    if (const QString trouble = what == LaunchOptions::List::Cameras ? platform.cameras->trouble() : QString();
        !trouble.isEmpty()) {
        std::fprintf(stderr, "lumavex: %s\n", qUtf8Printable(trouble));
        return 1;
    }
    const QStringList lines = what == LaunchOptions::List::Cameras   ? platform.cameras->names()
                              : what == LaunchOptions::List::Windows ? windowNames(*platform.screen)
                                                                     : sizeNames(*platform.screen);
    for (const QString& line : lines)
        std::puts(qUtf8Printable(line));
    return 0;
}

} // namespace lumavex
