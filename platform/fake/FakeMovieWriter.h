// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MovieWriter.h"

#include <QImage>

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
    void setKeepsPictures(bool keeps);
    /// The input is not ready after this many appends, until makeReady. 0: it is always ready.
    void setAppendsUntilFull(int appends);

    // While it writes.
    void makeReady(); ///< the observer is called on the calling thread, which stands for one of the writer's
    void fail(const QString& error); ///< from now on frames are refused

    QString path() const; ///< of the newest writer
    MovieWriterSettings settings() const;
    std::vector<Append> appends() const; ///< accepted ones
    bool finishRequested() const;
    CMTime end() const; ///< as given to finishWriting

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
    MovieWriter::Result result() const;

private:
    bool isReadyLocked() const;

    mutable std::mutex mutex_;
    QString path_;
    MovieWriterSettings settings_;
    QString error_;
    bool keepsPictures_ = true;
    int appendsUntilFull_ = 0;
    int appendsSinceReady_ = 0;
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
