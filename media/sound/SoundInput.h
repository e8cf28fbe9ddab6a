// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/sound/SoundFormat.h"
#include "media/sound/SoundServer.h"

#include <QString>

#include <functional>
#include <memory>
#include <thread>

namespace lumavex {

/// Listens to the system's current sound input during its lifetime: again when a lost input comes back, and to the new
/// one when the system changes the current input. Its own thread makes and ends pipelines, so that a server that hangs
/// blocks nobody else.
class SoundInput {
public:
    /// Called on the input's threads, one call at a time, and not after the input's end.
    struct Listener {
        std::function<void(const SoundChunk&)> sound;
        std::function<void()> lost;                              ///< no more sound for now
        std::function<void(const QString& reason)> trouble;      ///< the reason, as text for the user; repeatedly
        std::function<void(const CurrentSoundInput&)> described; ///< answers describe()
    };

    explicit SoundInput(Listener listener); ///< returns at once
    ~SoundInput();                          ///< releases the device; waits for that a second at most
    SoundInput(const SoundInput&) = delete;
    SoundInput& operator=(const SoundInput&) = delete;

    /// Requests the input's name and whether it is muted; Listener::described receives the answer. Any thread.
    void describe();

private:
    struct Shared;
    static void run(const std::shared_ptr<Shared>& shared);

    std::shared_ptr<Shared> shared_;
    std::thread thread_;
};

} // namespace lumavex
