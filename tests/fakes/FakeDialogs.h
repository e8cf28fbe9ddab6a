// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Dialogs.h"

#include <deque>
#include <vector>

namespace lumavex {

/// Gives the test's answers and records the questions. Without an answer, an alert is closed and a panel cancelled.
class FakeDialogs final : public Dialogs {
public:
    int runAlert(const Alert& alert) override
    {
        alerts.push_back(alert);
        return take(answers).value_or(static_cast<int>(alert.buttons.size()) - 1);
    }
    std::optional<QString> runSavePanel(const SavePanel& panel) override
    {
        savePanels.push_back(panel);
        return take(savePaths);
    }
    std::optional<QString> runOpenPanel(const QString&, const QStringList&) override { return take(openPaths); }
    bool open(const QUrl& url) override
    {
        opened.push_back(url);
        return true;
    }

    std::vector<Alert> alerts;
    std::vector<SavePanel> savePanels;
    std::vector<QUrl> opened;
    std::deque<int> answers;
    std::deque<QString> savePaths;
    std::deque<QString> openPaths;

private:
    template <class T>
    static std::optional<T> take(std::deque<T>& from)
    {
        if (from.empty())
            return std::nullopt;
        T first = from.front();
        from.pop_front();
        return first;
    }
};

} // namespace lumavex
