// SPDX-License-Identifier: GPL-3.0-or-later
#include "recording/WriterReadiness.h"

namespace lumavex {

WriterReadiness::WriterReadiness(MovieWriter& writer, std::chrono::milliseconds lookUp)
    : assetWriter_(writer), lookUp_(lookUp)
{
    assetWriter_.input().observeReadiness([this] { readyForMoreMediaData(); });
}

WriterReadiness::~WriterReadiness()
{
    assetWriter_.input().observeReadiness({});
}

Readiness WriterReadiness::waitUntilReady()
{
    const MovieInput& assetInput = assetWriter_.input();
    if (assetInput.isReadyForMoreMediaData())
        return Readiness::Ready;
    for (;;) {
        {
            const std::lock_guard guard(lock_);
            isWaitingForInputReady_ = 1;
        }
        const bool ready = assetInput.isReadyForMoreMediaData();
        if (ready || !assetWriter_.error().isEmpty()) {
            const std::lock_guard guard(lock_);
            isWaitingForInputReady_ = 0;
            // A signal given between the announcement and this look must not end the next wait.
            (void)writeSemaphore_.tryAcquire(writeSemaphore_.available());
            return ready ? Readiness::Ready : Readiness::Failed;
        }
        (void)writeSemaphore_.tryAcquire(1, static_cast<int>(lookUp_.count()));
    }
}

void WriterReadiness::readyForMoreMediaData()
{
    if (!assetWriter_.input().isReadyForMoreMediaData())
        return;
    const std::lock_guard guard(lock_);
    if (isWaitingForInputReady_ == 0)
        return;
    isWaitingForInputReady_ = 0;
    writeSemaphore_.release();
}

} // namespace lumavex
