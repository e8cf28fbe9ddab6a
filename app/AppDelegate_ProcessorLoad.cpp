// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"

#include "app/ProcessorUsage.h"
#include "app/Window_Main.h"
#include "app/Window_More_Information.h"

#include <QLoggingCategory>

namespace lumavex {

namespace {

// Off by default: the log gets 28,800 lines a day.
Q_LOGGING_CATEGORY(logLoad, "lumavex.load", QtWarningMsg)

} // namespace

void AppDelegate::updateInfo()
{
    const std::optional<std::vector<std::int32_t>> cpuInfo = platform_.processorLoad->sample();
    if (!cpuInfo) {
        qWarning("Error!");
        Terminate_App();
    }
    {
        const std::lock_guard lock(application.CPUUsageLock);
        application.fCPUUsage = processorUsage(*cpuInfo, application.prevCpuInfo, application.numCPUs);
    }
    qCInfo(logLoad, "Usage: %.2f", static_cast<double>(application.fCPUUsage));
    if (static_cast<double>(application.fCPUUsage) > processorUsageLimit
        && options_.load == LaunchOptions::Load::Refuse)
        Show_Window_Can_Not_Record();
    else
        Close_Window_Can_Not_Record();
    application.prevCpuInfo = *cpuInfo;
}

void AppDelegate::Show_Window_Can_Not_Record()
{
    if (options_.isUnattended())
        return; // an unattended run has no reader; the refusal itself is reported
    if (!application.p_Window_Can_Not_Record) {
        application.p_Window_Can_Not_Record = std::make_unique<Window_More_Information>(&window_);
        // Closing the window releases it here; it is deleted later, outside its own event.
        connect(application.p_Window_Can_Not_Record.get(), &Window_More_Information::windowWillClose, this,
                [this] { application.p_Window_Can_Not_Record.release()->deleteLater(); });
    }
    application.p_Window_Can_Not_Record->showWindow();
}

void AppDelegate::Close_Window_Can_Not_Record()
{
    application.p_Window_Can_Not_Record.reset();
}

} // namespace lumavex
