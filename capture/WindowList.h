// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/ScreenGrabber.h"

#include <QList>
#include <QString>
#include <QVariantMap>

#include <cstdint>
#include <memory>
#include <vector>

namespace lumavex {

/// One on-screen window: a record of the six keys below.
using WindowEntry = QVariantMap;

inline const QString kAppNameKey = QStringLiteral("applicationName"); ///< text: owner and process id, "Files (312)"
inline const QString kWindowOriginKey =
    QStringLiteral("windowOrigin");                                   ///< text: x/y of the top-left corner, y downward
inline const QString kWindowSizeKey = QStringLiteral("windowSize");   ///< text: width*height
inline const QString kWindowIDKey = QStringLiteral("windowID");       ///< number: the window number
inline const QString kWindowLevelKey = QStringLiteral("windowLevel"); ///< number: the window's layer
inline const QString kWindowOrderKey = QStringLiteral("windowOrder"); ///< number: 0 frontmost, counting up

/// The accumulator of one enumeration.
struct WindowListApplierData {
    explicit WindowListApplierData(std::shared_ptr<QList<WindowEntry>> list) { initWindowListData(std::move(list)); }
    void initWindowListData(std::shared_ptr<QList<WindowEntry>> list)
    {
        outputArray = std::move(list);
        order = 0;
    }

    std::shared_ptr<QList<WindowEntry>> outputArray;
    std::int32_t order = 0; ///< the next windowOrder
};

/// Appends the window's entry to the accumulator's list; a window that is not shared gets none and uses no number.
void WindowListApplierFunction(const WindowDescription& window, WindowListApplierData& data);

/// The text that names a window in the menu and finds it again: "Files (312) (4711)".
QString Return_Window_Identifier_String(const WindowEntry& entry);

/// Whether the window is one of this program's own: its owner's name contains the product name.
bool belongsToLumavex(const WindowEntry& entry);

/// The window numbers of the entries, front to back.
std::vector<std::uint32_t> newWindowListFromSelection(QList<WindowEntry> entries);

/// The first entry whose identifier contains the text; null when there is none. Valid while the list is not changed.
const WindowEntry* windowOfIdentifier(const QList<WindowEntry>& list, const QString& text);

/// Which windows are grabbed at a tick. Window exclusive (`exclusive` not null): the first one whose identifier
/// contains the text, else every window but the program's own. Otherwise: every window but the program's own.
QList<WindowEntry> windowsToGrab(const QList<WindowEntry>& all, const QString* exclusive);

} // namespace lumavex
