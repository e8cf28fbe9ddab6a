// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "settings_dialog/Window_Configurations.h"
#include "tests/fakes/FakeDialogs.h"

#include <gtest/gtest.h>

#include <memory>

namespace lumavex {

const QString noCamera = QStringLiteral("Do not connect to Camera");

/// The dialog by itself. Controls are found by their names in the interface file.
struct SettingsDialog : testing::Test {
    FakeDialogs dialogs;
    DialogSettings loaded;
    LiveSettings live;
    DialogChoices choices{{noCamera, QStringLiteral("Desk"), QStringLiteral("Door"), QStringLiteral("Desk")},
                          QStringLiteral("Microphone"),
                          192};
    std::unique_ptr<Window_Configurations> window;

    void open()
    {
        window = std::make_unique<Window_Configurations>(
            nullptr, dialogs, loaded, live, choices,
            [](const DialogSettings&, SettingsSubject) { return std::vector<FrameOutline>(); });
    }

    template <class Control>
    Control& control(const char* name) const
    {
        auto* found = window->findChild<Control*>(QLatin1String(name));
        if (!found)
            throw std::runtime_error(std::string("the dialog has no ") + name);
        return *found;
    }
};

} // namespace lumavex
