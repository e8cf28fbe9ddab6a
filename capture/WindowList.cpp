// SPDX-License-Identifier: GPL-3.0-or-later
#include "capture/WindowList.h"

#include <algorithm>

namespace lumavex {

void WindowListApplierFunction(const WindowDescription& window, WindowListApplierData& data)
{
    if (!window.shared)
        return;
    const QString owner = window.ownerName.value_or(QStringLiteral("((unknown))"));
    data.outputArray->append({
        {kAppNameKey, QStringLiteral("%1 (%2)").arg(owner, QString::number(window.ownerPid))},
        {kWindowOriginKey, QString::number(window.x, 'f', 0) + u'/' + QString::number(window.y, 'f', 0)},
        {kWindowSizeKey, QString::number(window.width, 'f', 0) + u'*' + QString::number(window.height, 'f', 0)},
        {kWindowIDKey, window.number},
        {kWindowLevelKey, window.layer},
        {kWindowOrderKey, data.order++},
    });
}

QString Return_Window_Identifier_String(const WindowEntry& entry)
{
    return entry.value(kAppNameKey).toString() + QStringLiteral(" (")
           + QString::number(entry.value(kWindowIDKey).toUInt()) + u')';
}

bool belongsToLumavex(const WindowEntry& entry)
{
    return entry.value(kAppNameKey).toString().contains(QLatin1String("Lumavex"));
}

std::vector<std::uint32_t> newWindowListFromSelection(QList<WindowEntry> entries)
{
    std::ranges::stable_sort(entries, {}, [](const WindowEntry& e) { return e.value(kWindowOrderKey).toInt(); });
    std::vector<std::uint32_t> numbers;
    numbers.reserve(static_cast<std::size_t>(entries.size()));
    for (const WindowEntry& entry : entries)
        numbers.push_back(entry.value(kWindowIDKey).toUInt());
    return numbers;
}

const WindowEntry* windowOfIdentifier(const QList<WindowEntry>& list, const QString& text)
{
    const auto it = std::ranges::find_if(
        list, [&text](const WindowEntry& entry) { return Return_Window_Identifier_String(entry).contains(text); });
    return it == list.end() ? nullptr : &*it;
}

QList<WindowEntry> windowsToGrab(const QList<WindowEntry>& all, const QString* exclusive)
{
    if (const WindowEntry* chosen = exclusive ? windowOfIdentifier(all, *exclusive) : nullptr)
        return {*chosen};
    QList<WindowEntry> others;
    for (const WindowEntry& entry : all)
        if (!belongsToLumavex(entry))
            others.append(entry);
    return others;
}

} // namespace lumavex
