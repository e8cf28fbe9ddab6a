// SPDX-License-Identifier: GPL-3.0-or-later
#include "recording/EndServices.h"

#include "recording/WorkerRun.h"

#include <utility>

namespace lumavex {

EndServices endServicesOn(RunLoop& runLoop, Dialogs& dialogs, MovieReader readMovie,
                          ChildProcessFactory createChildProcess)
{
    EndServices services{dialogs, std::move(readMovie)};
    services.run = [&runLoop](const std::function<void()>& work) { runOnWorker(runLoop, work); };
    services.join = [&runLoop, createChildProcess](const EncoderJob& job, const EncoderWatch& watch) {
        EncoderState encoder;
        return runEncoder(job, encoder, createChildProcess, runLoop, watch);
    };
    services.convert = [&runLoop, createChildProcess](const ContainerJob& job, const EncoderWatch& watch) {
        return copyIntoContainer(job, createChildProcess, runLoop, watch);
    };
    return services;
}

EndServices endServicesWithoutEvents(Dialogs& dialogs, MovieReader readMovie)
{
    EndServices services{dialogs, std::move(readMovie)};
    services.answers = EndServices::Answers::ByProgram;
    services.run = [](const std::function<void()>& work) { work(); };
    services.join = [](const EncoderJob& job, const EncoderWatch&) { return joinWithoutEvents(job); };
    return services;
}

} // namespace lumavex
