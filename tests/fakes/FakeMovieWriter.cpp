// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/fakes/FakeMovieWriter.h"

#include <cstring>
#include <thread>

namespace lumavex {

namespace {

QImage pictureOf(const CVPixelBuffer& pixels)
{
    QImage picture(pixels.width, pixels.height, QImage::Format_ARGB32);
    for (int y = 0; y < pixels.height; ++y) {
        const std::uint8_t* source = pixels.baseAddress + std::ptrdiff_t{y} * pixels.bytesPerRow;
        auto* const row = reinterpret_cast<QRgb*>(picture.scanLine(y));
        for (int x = 0; x < pixels.width; ++x, source += 4)
            row[x] = qRgba(source[1], source[2], source[3], source[0]);
    }
    return picture;
}

/// The previous picture with the given rows replaced by those of the current one.
QImage updated(QImage before, const QImage& now, const std::vector<RowRange>& rows)
{
    for (const RowRange& range : rows)
        for (int y = range.first; y < range.first + range.count; ++y)
            std::memcpy(before.scanLine(y), now.constScanLine(y), static_cast<std::size_t>(now.bytesPerLine()));
    return before;
}

} // namespace

void FakeMovie::setStartError(const QString& error)
{
    const std::lock_guard lock(mutex_);
    startError_ = error;
}

void FakeMovie::setKeepsPictures(bool keeps)
{
    const std::lock_guard lock(mutex_);
    keepsPictures_ = keeps;
}

void FakeMovie::setAppendsUntilFull(int appends)
{
    const std::lock_guard lock(mutex_);
    appendsUntilFull_ = appends;
}

void FakeMovie::holdFinish()
{
    const std::lock_guard lock(mutex_);
    finishHeld_ = true;
}

void FakeMovie::makeReady()
{
    bool became = false;
    {
        const std::lock_guard lock(mutex_);
        became = !isReadyLocked();
        appendsSinceReady_ = 0;
    }
    const std::lock_guard observing(observerMutex_);
    if (became && observer_)
        observer_();
}

void FakeMovie::letFinish()
{
    {
        const std::lock_guard lock(mutex_);
        finishHeld_ = false;
    }
    mayFinish_.notify_all();
}

void FakeMovie::fail(const QString& error)
{
    const std::lock_guard lock(mutex_);
    error_ = error;
}

QString FakeMovie::path() const
{
    const std::lock_guard lock(mutex_);
    return path_;
}

MovieWriterSettings FakeMovie::settings() const
{
    const std::lock_guard lock(mutex_);
    return settings_;
}

std::vector<FakeMovie::Append> FakeMovie::appends() const
{
    const std::lock_guard lock(mutex_);
    return appends_;
}

bool FakeMovie::finishRequested() const
{
    const std::lock_guard lock(mutex_);
    return finishRequested_;
}

CMTime FakeMovie::end() const
{
    const std::lock_guard lock(mutex_);
    return end_;
}

double FakeMovie::seconds() const
{
    const std::lock_guard lock(mutex_);
    return appends_.empty() ? 0 : CMTimeGetSeconds(CMTimeSubtract(end_, appends_.front().time));
}

QString FakeMovie::start(const QString& path, const MovieWriterSettings& settings)
{
    const std::lock_guard lock(mutex_);
    path_ = path;
    settings_ = settings;
    if (!startError_.isEmpty())
        return startError_;
    if (!(settings.AVVideoWidthKey >= 1 && settings.AVVideoHeightKey >= 1))
        return QStringLiteral("A movie must have pixels.");
    appends_.clear();
    error_.clear();
    appendsSinceReady_ = 0;
    finishRequested_ = false;
    started_ = true;
    return {};
}

bool FakeMovie::isReadyLocked() const
{
    return appendsUntilFull_ == 0 || appendsSinceReady_ < appendsUntilFull_;
}

bool FakeMovie::isReady() const
{
    const std::lock_guard lock(mutex_);
    return isReadyLocked();
}

void FakeMovie::observe(std::function<void()> observer)
{
    const std::lock_guard observing(observerMutex_);
    observer_ = std::move(observer);
}

bool FakeMovie::accept(CMTime time, const CVPixelBuffer* pixels, const std::vector<RowRange>* changed)
{
    const std::lock_guard lock(mutex_);
    if (!started_ || finishRequested_ || !error_.isEmpty() || !isReadyLocked() || !(time.flags & kCMTimeFlags_Valid))
        return false;
    if (appends_.empty() ? !pixels || CMTimeCompare(time, CMTimeMake(0, 1)) < 0
                         : CMTimeCompare(time, appends_.back().time) <= 0)
        return false;
    if (changed && appends_.empty())
        changed = nullptr; // on the first append all rows count as changed
    if (pixels
        && (pixels->width != static_cast<int>(settings_.AVVideoWidthKey)
            || pixels->height != static_cast<int>(settings_.AVVideoHeightKey)
            || pixels->pixelFormat != kCVPixelFormatType_32ARGB))
        return false;
    if (changed && changed->empty())
        pixels = nullptr; // a repetition
    Append append{time, !pixels, {}, pixels && !changed ? pixels->height : 0};
    for (const RowRange& range : changed ? *changed : std::vector<RowRange>())
        append.rows += range.count;
    if (pixels && keepsPictures_)
        append.picture = picture_ = changed ? updated(picture_, pictureOf(*pixels), *changed) : pictureOf(*pixels);
    appends_.push_back(append);
    ++appendsSinceReady_;
    return true;
}

QString FakeMovie::error() const
{
    const std::lock_guard lock(mutex_);
    return error_;
}

std::int64_t FakeMovie::bytes() const
{
    const std::lock_guard lock(mutex_);
    return static_cast<std::int64_t>(appends_.size());
}

MovieWriterStatistics FakeMovie::statistics() const
{
    const std::lock_guard lock(mutex_);
    MovieWriterStatistics counts;
    for (const Append& append : appends_)
        ++(append.repeated                                              ? counts.repeated
           : append.rows < static_cast<int>(settings_.AVVideoHeightKey) ? counts.spliced
                                                                        : counts.encoded);
    counts.bytes = static_cast<std::int64_t>(appends_.size());
    return counts;
}

void FakeMovie::requestFinish(CMTime end)
{
    const std::lock_guard lock(mutex_);
    finishRequested_ = true;
    end_ = end;
}

MovieWriter::Result FakeMovie::awaitFinish()
{
    std::unique_lock lock(mutex_);
    mayFinish_.wait(lock, [this] { return !finishHeld_; });
    if (!started_)
        return {QStringLiteral("There is no movie to finish."), 0};
    return {error_, static_cast<std::int64_t>(appends_.size())};
}

namespace {

class FakeMovieWriter final : public MovieWriter, private MovieInput, private PixelBufferAdaptor {
public:
    FakeMovieWriter(std::shared_ptr<FakeMovie> movie, QString path, const MovieWriterSettings& settings)
        : movie_(std::move(movie)), path_(std::move(path)), settings_(settings)
    {
    }
    ~FakeMovieWriter() override { movie_->observe({}); }

    MovieInput& input() override { return *this; }
    PixelBufferAdaptor& adaptor() override { return *this; }
    QString startWriting() override { return movie_->start(path_, settings_); }
    QString error() const override { return movie_->error(); }
    std::int64_t bytesWritten() const override { return movie_->bytes(); }
    MovieWriterStatistics statistics() const override { return movie_->statistics(); }
    void finishWritingWithCompletionHandler(CMTime end, std::function<void(const Result&)> handler) override
    {
        movie_->requestFinish(end);
        if (!finishing_.joinable())
            finishing_ = std::jthread([movie = movie_, done = std::move(handler)] { done(movie->awaitFinish()); });
    }

private:
    bool isReadyForMoreMediaData() const override { return movie_->isReady(); }
    void observeReadiness(std::function<void()> ready) override { movie_->observe(std::move(ready)); }
    bool appendPixelBuffer_withPresentationTime(CVPixelBufferRef buffer, CMTime time) override
    {
        return buffer && movie_->accept(time, buffer.get());
    }
    bool appendChangedRows_withPresentationTime(CVPixelBufferRef buffer, const std::vector<RowRange>& changed,
                                                CMTime time) override
    {
        return buffer && movie_->accept(time, buffer.get(), &changed);
    }
    bool appendPrevious_withPresentationTime(CMTime time) override { return movie_->accept(time, nullptr); }

    const std::shared_ptr<FakeMovie> movie_;
    const QString path_;
    const MovieWriterSettings settings_;
    std::jthread finishing_;
};

} // namespace

MovieWriterFactory fakeMovieWriters(std::shared_ptr<FakeMovie> movie)
{
    return [movie = std::move(movie)](const QString& path, const MovieWriterSettings& settings) {
        return std::make_unique<FakeMovieWriter>(movie, path, settings);
    };
}

} // namespace lumavex
