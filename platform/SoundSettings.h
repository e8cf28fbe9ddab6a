// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

namespace lumavex {

/// What the system tells about its sound input, and its own settings of sound. Main thread.
class SoundSettings {
public:
    virtual ~SoundSettings() = default;

    /// The input a recording begun now would hear, in the words the system's own settings use. Nothing when there is
    /// none, or when the sound server does not answer: this waits for it 300 ms at most, a few ms as a rule.
    virtual std::optional<QString> nameOfInput() = 0;

    /// Opens the settings of sound that the running desktop offers, beside the program. False when it offers none.
    virtual bool open() = 0;
};

} // namespace lumavex
