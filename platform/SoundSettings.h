// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

namespace lumavex {

/// The system's sound input, and its own sound settings. Main thread.
class SoundSettings {
public:
    virtual ~SoundSettings() = default;

    /// Name of the input that a recording would use now, as in the system's own settings. std::nullopt when there is
    /// none, or when the sound server does not answer: waits for it 300 ms at most, usually a few ms.
    virtual std::optional<QString> nameOfInput() = 0;

    /// Opens the sound settings of the running desktop, beside the program. False when it has none.
    virtual bool open() = 0;
};

} // namespace lumavex
