// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/SoundSettings.h"

namespace lumavex {

/// A system whose sound input and settings the test sets.
class FakeSoundSettings final : public SoundSettings {
public:
    std::optional<QString> nameOfInput() override { return name; }
    bool open() override
    {
        opened += canBeOpened ? 1 : 0;
        return canBeOpened;
    }

    std::optional<QString> name = QStringLiteral("Microphone");
    bool canBeOpened = true;
    int opened = 0;
};

} // namespace lumavex
