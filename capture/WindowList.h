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

/// One on-screen window: a record with the six keys below.
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

/// Appends the window's entry to the accumulator's list. A window that is not shared is skipped and uses no number.
void WindowListApplierFunction(const WindowDescription& window, WindowListApplierData& data);

/// The text that identifies a window in the menu and when it is looked up: "Files (312) (4711)".
QString Return_Window_Identifier_String(const WindowEntry& entry);

/// True when the window belongs to this program: its owner's name contains the product name.
bool belongsToLumavex(const WindowEntry& entry);

/// The window numbers of the entries, front to back.
std::vector<std::uint32_t> newWindowListFromSelection(QList<WindowEntry> entries);

/// The first entry whose identifier contains the text; null when there is none. Valid until the list changes.
const WindowEntry* windowOfIdentifier(const QList<WindowEntry>& list, const QString& text);

/// Windows to grab at a tick. Window exclusive (`exclusive` not null): the first one whose identifier contains the
/// text, else all but the program's own. Otherwise: all but the program's own.
QList<WindowEntry> windowsToGrab(const QList<WindowEntry>& all, const QString* exclusive);

} // namespace lumavex
