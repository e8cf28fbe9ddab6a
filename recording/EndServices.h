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

/// What the end of a recording needs of the program around it. All functions are called on the main thread, but
/// readMovie, which `run` may call on another one.
struct EndServices {
    Dialogs& dialogs;
    MovieReader readMovie;

    /// Who answers the dialogs.
    enum class Answers {
        ByUser,    ///< a place that is chosen revokes an earlier Cancel; no name changes what kind of file is saved
        ByProgram, ///< the name decides the kind of file
    } answers = Answers::ByUser;
    std::optional<std::chrono::seconds> patience = {}; ///< see EncoderWatch

    /// Does slow work and returns when it is done.
    std::function<void(const std::function<void()>& work)> run = {};
    std::function<QString(const EncoderJob&, const EncoderWatch&)> join = {}; ///< see runEncoder
    /// See copyIntoContainer. Empty: no file of another kind can be made.
    std::function<QString(const ContainerJob&, const EncoderWatch&)> convert = {};

    std::function<void()> beginProgress = [] {}; ///< shows it, if it is not shown, and lets the user cancel
    std::function<void(float percentage)> setProgress = [](float) {};
    std::function<void()> endProgress = [] {};                                    ///< may be called when none is shown
    std::function<void(const QString& text)> showMessage = [](const QString&) {}; ///< beside the dialogs
};

/// The run loop is served while an encoder or slow work is waited for. What is given must outlive the services.
EndServices endServicesOn(RunLoop& runLoop, Dialogs& dialogs, MovieReader readMovie,
                          ChildProcessFactory createChildProcess);

/// For a program that has no event loop any more: everything blocks. `dialogs` are answered by the program.
EndServices endServicesWithoutEvents(Dialogs& dialogs, MovieReader readMovie);

} // namespace lumavex
