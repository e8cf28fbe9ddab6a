// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Dialogs.h"
#include "platform/MovieWriter.h"
#include "recording/EncoderRun.h"
#include "recording/MovieContainer.h"

#include <QString>

#include <chrono>
#include <functional>
#include <optional>

namespace lumavex {

/// Services of the program that the end of a recording needs. All functions are called on the main thread, except
/// readMovie, which `run` may call on another one.
struct EndServices {
    Dialogs& dialogs;
    MovieReader readMovie;

    /// Answers come from the user or from the program.
    enum class Answers {
        ByUser,    ///< choosing a path revokes an earlier Cancel; the name does not change the container
        ByProgram, ///< the name decides the container
    } answers = Answers::ByUser;
    std::optional<std::chrono::seconds> patience = {}; ///< see EncoderWatch

    /// Runs slow work and returns when it is done.
    std::function<void(const std::function<void()>& work)> run = {};
    std::function<QString(const EncoderJob&, const EncoderWatch&)> join = {}; ///< see runEncoder
    /// See copyIntoContainer. Empty: no other container can be made.
    std::function<QString(const ContainerJob&, const EncoderWatch&)> convert = {};

    std::function<void()> beginProgress = [] {}; ///< shows the progress unless it is shown already, and lets the user
                                                 ///< cancel
    std::function<void(float percentage)> setProgress = [](float) {};
    std::function<void()> endProgress = [] {};                                    ///< may be called when no progress is
                                                                                  ///< shown
    std::function<void(const QString& text)> showMessage = [](const QString&) {}; ///< shows a message outside the
                                                                                  ///< dialogs
};

/// Services that serve the run loop while they wait for an encoder or slow work. All arguments must outlive the
/// services.
EndServices endServicesOn(RunLoop& runLoop, Dialogs& dialogs, MovieReader readMovie,
                          ChildProcessFactory createChildProcess);

/// Services for a program without a running event loop: all of them block. The program answers `dialogs`.
EndServices endServicesWithoutEvents(Dialogs& dialogs, MovieReader readMovie);

} // namespace lumavex
