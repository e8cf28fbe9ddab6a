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
            isWaitingForInputReady = 1;
        }
        const bool ready = assetInput.isReadyForMoreMediaData();
        if (ready || !assetWriter_.error().isEmpty()) {
            const std::lock_guard guard(lock_);
            isWaitingForInputReady = 0;
            // A signal sent between the announcement and this check must not end the next wait.
            (void)writeSemaphore.tryAcquire(writeSemaphore.available());
            return ready ? Readiness::Ready : Readiness::Failed;
        }
        (void)writeSemaphore.tryAcquire(1, static_cast<int>(lookUp_.count()));
    }
}

void WriterReadiness::readyForMoreMediaData()
{
    if (!assetWriter_.input().isReadyForMoreMediaData())
        return;
    const std::lock_guard guard(lock_);
    if (isWaitingForInputReady == 0)
        return;
    isWaitingForInputReady = 0;
    writeSemaphore.release();
}

} // namespace lumavex
