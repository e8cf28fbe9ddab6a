// SPDX-License-Identifier: GPL-3.0-or-later
#include "recording/WriterReadiness.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace lumavex {
namespace {

/// A writer with a queue of one frame.
class SmallWriter : public MovieWriter, private MovieInput, private PixelBufferAdaptor {
public:
    void fill() { isFull_ = true; }
    void fail() { hasFailed_ = true; }
    /// The queue empties on another thread just after the `looks`-th time it was found full.
    void emptyAfterLooks(int looks) { looks_ = looks; }

    MovieInput& input() override { return *this; }
    PixelBufferAdaptor& adaptor() override { return *this; }
    QString startWriting() override { return {}; }
    QString error() const override { return hasFailed_ ? QStringLiteral("disk full") : QString(); }
    std::int64_t bytesWritten() const override { return 0; }
    MovieWriterStatistics statistics() const override { return {}; }
    void finishWritingWithCompletionHandler(CMTime, std::function<void(const Result&)>) override {}

private:
    bool isReadyForMoreMediaData() const override
    {
        const bool ready = !isFull_;
        if (!ready && looks_ > 0 && --looks_ == 0)
            std::thread([this] { empty(); }).join();
        return ready;
    }
    void empty() const
    {
        isFull_ = false;
        const std::lock_guard guard(lock_);
        if (observer_)
            observer_();
    }
    void observeReadiness(std::function<void()> observer) override
    {
        const std::lock_guard guard(lock_);
        observer_ = std::move(observer);
    }
    bool appendPixelBuffer_withPresentationTime(CVPixelBufferRef, CMTime) override { return false; }
    bool appendChangedRows_withPresentationTime(CVPixelBufferRef, const std::vector<RowRange>&, CMTime) override
    {
        return false;
    }
    bool appendPrevious_withPresentationTime(CMTime) override { return false; }

    mutable std::atomic<bool> isFull_ = false;
    mutable std::atomic<int> looks_ = 0;
    std::atomic<bool> hasFailed_ = false;
    mutable std::mutex lock_;
    std::function<void()> observer_;
};

TEST(WriterReadiness, AChangeRightAfterALookIsNotMissed)
{
    SmallWriter writer;
    WriterReadiness readiness(writer, std::chrono::hours(1)); // a change that is missed hangs the test
    for (const int looks : {1, 2, 1, 2, 2}) {
        writer.fill();
        writer.emptyAfterLooks(looks);
        EXPECT_EQ(readiness.waitUntilReady(), Readiness::Ready);
        EXPECT_TRUE(writer.input().isReadyForMoreMediaData()) << "a stale signal ended the wait";
    }
}

TEST(WriterReadiness, AFailedWriterEndsTheWait)
{
    SmallWriter writer;
    WriterReadiness readiness(writer);
    writer.fill(); // and nothing empties it
    std::thread disk([&writer] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        writer.fail();
    });
    EXPECT_EQ(readiness.waitUntilReady(), Readiness::Failed);
    disk.join();
}

} // namespace
} // namespace lumavex
