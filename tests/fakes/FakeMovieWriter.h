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

/// What a fake movie writer was given, and the strings a test pulls on it. Shared by the test and the writers that
/// the factory makes; any thread.
class FakeMovie {
public:
    struct Append {
        CMTime time;
        bool repeated = false;
        QImage picture; ///< null for a repetition, and when pictures are not kept
        int rows = 0;   ///< that were said to have changed; all of them when that was not said
    };

    // Before the writer starts.
    void setStartError(const QString& error);
    void setKeepsPictures(bool keeps);
    /// The input is not ready after this many appends, until makeReady. 0: it is always ready.
    void setAppendsUntilFull(int appends);
    /// Finishing is not complete until letFinish.
    void holdFinish();

    // While it writes.
    void makeReady(); ///< the observer is called on the calling thread, which stands for one of the writer's
    void letFinish();
    void fail(const QString& error); ///< from now on frames are refused

    QString path() const; ///< of the newest writer
    MovieWriterSettings settings() const;
    std::vector<Append> appends() const; ///< accepted ones
    bool finishRequested() const;
    CMTime end() const;     ///< as given to finishWriting
    double seconds() const; ///< from the first frame to that end

    // The writer's side.
    QString start(const QString& path, const MovieWriterSettings& settings);
    bool isReady() const;
    void observe(std::function<void()> observer);
    /// Null pixels for a repetition. Rows outside of `changed`, when it is given, are those accepted before, whatever
    /// the pixels say.
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
    QImage picture_; ///< accepted last

    std::mutex observerMutex_; ///< held while the observer runs
    std::function<void()> observer_;
};

/// A factory of writers that write nothing but tell `movie`.
MovieWriterFactory fakeMovieWriters(std::shared_ptr<FakeMovie> movie);

} // namespace lumavex
