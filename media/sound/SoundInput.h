// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/sound/SoundFormat.h"
#include "media/sound/SoundServer.h"

#include <QString>

#include <functional>
#include <memory>
#include <thread>

namespace lumavex {

/// Listens to the system's current sound input for as long as it lives: again when it was lost and has come back, and
/// to the new one when the system makes another input the current one. A thread of its own makes and ends pipelines, so
/// that a server that hangs holds up nobody.
class SoundInput {
public:
    /// Called on threads of the input's, never two at a time, and not after the input's end.
    struct Listener {
        std::function<void(const SoundChunk&)> sound;
        std::function<void()> lost;                              ///< no more sound for now
        std::function<void(const QString& reason)> trouble;      ///< why not, in the user's words; again and again
        std::function<void(const CurrentSoundInput&)> described; ///< answers describe
    };

    explicit SoundInput(Listener listener); ///< returns at once
    ~SoundInput();                          ///< lets go of the device; waits for that a second at most
    SoundInput(const SoundInput&) = delete;
    SoundInput& operator=(const SoundInput&) = delete;

    /// Finds out what the input is called and whether it is muted, where it can be heard. Any thread.
    void describe();

private:
    struct Shared;
    static void run(const std::shared_ptr<Shared>& shared);

    std::shared_ptr<Shared> shared_;
    std::thread thread_;
};

} // namespace lumavex
