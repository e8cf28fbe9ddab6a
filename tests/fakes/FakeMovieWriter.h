// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MovieWriter.h"

#include <QImage>

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace lumavex {

/// Records the input of a fake movie writer, and lets a test control it. Shared by the test and the writers of the
/// factory; any thread.
class FakeMovie {
public:
    struct Append {
        CMTime time;
        bool repeated = false;
        QImage picture; ///< null for a repetition, and when pictures are not kept
        int rows = 0;   ///< number of rows reported as changed; all rows without a report
    };

    // To be called before the writer starts.
    void setStartError(const QString& error);
    void setKeepsPictures(bool keeps);
    /// The input stops being ready after this many appends, until makeReady. 0: it is always ready.
    void setAppendsUntilFull(int appends);
    /// Finishing is not complete until letFinish.
    void holdFinish();

    // To be called while it writes.
    void makeReady(); ///< calls the observer on the calling thread, which represents a writer thread
    void letFinish();
    void fail(const QString& error); ///< all later frames are refused

    QString path() const; ///< path of the newest writer
    MovieWriterSettings settings() const;
    std::vector<Append> appends() const; ///< accepted frames
    bool finishRequested() const;
    CMTime end() const;     ///< argument of finishWriting
    double seconds() const; ///< from the first frame to end()

    // Called by the writer.
    QString start(const QString& path, const MovieWriterSettings& settings);
    bool isReady() const;
    void observe(std::function<void()> observer);
    /// Null pixels for a repetition. Rows outside `changed`, if given, keep their last accepted pixels, whatever the
    /// new ones are.
    bool accept(CMTime time, const CVPixelBuffer* pixels, const std::vector<RowRange>* changed = nullptr);
    QString error() const;
    std::int64_t bytes() const; ///< one per accepted append
    MovieWriterStatistics statistics() const;
    void requestFinish(CMTime end);
    MovieWriter::Result awaitFinish(); ///< blocks while finishing is held

private:
    bool isReadyLocked() const;

    mutable std::mutex mutex_;
    std::condition_variable mayFinish_;
    QString path_;
    MovieWriterSettings settings_;
    QString startError_;
    QString error_;
    bool keepsPictures_ = true;
    int appendsUntilFull_ = 0;
    int appendsSinceReady_ = 0;
    bool finishHeld_ = false;
    bool finishRequested_ = false;
    bool started_ = false;
    CMTime end_;
    std::vector<Append> appends_;
    QImage picture_; ///< last accepted picture

    std::mutex observerMutex_; ///< locked while the observer runs
    std::function<void()> observer_;
};

/// A factory of writers that write no file but report to `movie`.
MovieWriterFactory fakeMovieWriters(std::shared_ptr<FakeMovie> movie);

} // namespace lumavex
