// SPDX-License-Identifier: GPL-3.0-or-later
#include "movie/JpegMovieWriter.h"

#include "movie/EncoderWorkers.h"
#include "movie/FragmentQueue.h"
#include "movie/HybridMp4File.h"
#include "movie/JpegEncoder.h"
#include "movie/MovieText.h"

#include <QDateTime>
#include <QFile>

#include <optional>

namespace lumavex {

namespace {

constexpr std::int64_t kSecondsFrom1904To1970 = 2082844800;

int pixelsOf(double side)
{
    return side >= 1 && side <= kLargestJpegSide ? static_cast<int>(side) : 0; // NaN gives 0
}

class JpegMovieWriter final : public MovieWriter, private MovieInput, private PixelBufferAdaptor {
public:
    JpegMovieWriter(const QString& path, const MovieWriterSettings& settings);
    ~JpegMovieWriter() override;

    MovieInput& input() override { return *this; }
    PixelBufferAdaptor& adaptor() override { return *this; }
    QString startWriting() override;
    QString error() const override;
    std::int64_t bytesWritten() const override { return file_.bytesWritten(); }
    MovieWriterStatistics statistics() const override;
    void finishWritingWithCompletionHandler(CMTime end, std::function<void(const Result&)> handler) override;

private:
    enum class State { Idle, Writing, Finished };

    bool isReadyForMoreMediaData() const override { return frames_.isReady(); }
    void observeReadiness(std::function<void()> ready) override { frames_.observeReadiness(std::move(ready)); }
    bool appendPixelBuffer_withPresentationTime(CVPixelBufferRef buffer, CMTime time) override;
    bool appendChangedRows_withPresentationTime(CVPixelBufferRef buffer, const std::vector<RowRange>& changed,
                                                CMTime time) override;
    bool appendPrevious_withPresentationTime(CMTime time) override;

    bool append(CVPixelBufferRef buffer, std::span<const MacroblockRows> runs, CMTime time);
    bool fits(const CVPixelBufferRef& buffer) const;
    std::int64_t startOf(CMTime time) const;
    std::optional<std::int64_t> acceptedStart(CMTime time) const;
    void accept(std::int64_t start, CMTime time);

    // File thread.
    void writeFrames();
    void writeFrame(EncoderWorkers::Frame& frame);
    bool isWhole(const JpegStrip& strip) const { return strip.rows == allMacroblockRows(height_); }
    std::unique_ptr<JpegRows> pictureOf(EncoderWorkers::Frame& frame);
    void record(std::error_code error);
    void fail(const QString& error);
    Result finish();

    const std::string path_;
    const int width_;
    const int height_;
    const std::int32_t nominalRate_;
    const std::int32_t timescale_ = movieTimescale(nominalRate_);

    // Main thread.
    State state_ = State::Idle;
    MovieWriterStatistics counts_;          ///< without the figures of the queue and the file
    CMTime firstTime_;                      ///< time of the first frame, as passed
    std::optional<std::int64_t> lastStart_; ///< start of the newest frame, ticks from the first one
    std::vector<MacroblockRows> changedRuns_;

    // File thread, from startWriting() on.
    HybridMp4File file_;
    FragmentQueue fragments_{file_, [this](std::unique_ptr<JpegRows> jpeg) { frames_.giveBack(std::move(jpeg)); },
                             timescale_, timescale_ / nominalRate_};

    // Set before the queue is closed, read by the file thread afterwards.
    std::int64_t end_ = 0; ///< end of the last frame, ticks from the first one
    std::function<void(const Result&)> finished_;

    mutable std::mutex errorMutex_;
    QString error_; ///< guarded by errorMutex_

    EncoderWorkers frames_;
    std::jthread fileThread_; ///< last: it uses everything above
};

JpegMovieWriter::JpegMovieWriter(const QString& path, const MovieWriterSettings& settings)
    : path_(QFile::encodeName(path).toStdString()), width_(pixelsOf(settings.AVVideoWidthKey)),
      height_(pixelsOf(settings.AVVideoHeightKey)), nominalRate_(std::clamp(settings.nominalRate, 1, kFinestTimescale))
{
}

JpegMovieWriter::~JpegMovieWriter()
{
    if (state_ == State::Writing)
        frames_.close(EncoderWorkers::Rest::Discard);
}

QString JpegMovieWriter::startWriting()
{
    if (state_ != State::Idle)
        return MovieText::tr("The movie has been started already.");
    if (width_ == 0 || height_ == 0)
        return MovieText::tr("A movie must be between 1 and %1 pixels wide and high.").arg(kLargestJpegSide);
    const auto created = static_cast<std::uint64_t>(QDateTime::currentSecsSinceEpoch() + kSecondsFrom1904To1970);
    if (const auto error = file_.create(path_, {width_, height_, created, timescale_}))
        return MovieText::cannotWrite(error);
    state_ = State::Writing;
    fileThread_ = std::jthread([this] { writeFrames(); });
    return {};
}

QString JpegMovieWriter::error() const
{
    const std::lock_guard lock(errorMutex_);
    return error_;
}

// Ticks from the first frame, which is time zero of the file. Subtracts before rounding: a frame's duration is exact
// although the first time may not be a whole number of ticks.
std::int64_t JpegMovieWriter::startOf(CMTime time) const
{
    return lastStart_ ? CMTimeConvertScale(CMTimeSubtract(time, firstTime_), timescale_) : 0;
}

// Start of a frame of this time; std::nullopt if it must not be appended now.
std::optional<std::int64_t> JpegMovieWriter::acceptedStart(CMTime time) const
{
    if (state_ != State::Writing || !(time.flags & kCMTimeFlags_Valid) || !error().isEmpty())
        return std::nullopt;
    const std::int64_t start = startOf(time);
    const bool follows = lastStart_ ? start > *lastStart_ && start <= *lastStart_ + kLongestSample
                                    : CMTimeCompare(time, CMTimeMake(0, 1)) >= 0;
    return follows ? std::optional(start) : std::nullopt;
}

void JpegMovieWriter::accept(std::int64_t start, CMTime time)
{
    if (!lastStart_)
        firstTime_ = time;
    lastStart_ = start;
}

bool JpegMovieWriter::fits(const CVPixelBufferRef& buffer) const
{
    return buffer && buffer->width == width_ && buffer->height == height_
           && buffer->pixelFormat == kCVPixelFormatType_32ARGB && buffer->bytesPerRow >= 4 * width_;
}

bool JpegMovieWriter::append(CVPixelBufferRef buffer, std::span<const MacroblockRows> runs, CMTime time)
{
    const auto start = acceptedStart(time);
    if (!start || !frames_.encode(std::move(buffer), runs, *start))
        return false;
    accept(*start, time);
    const bool whole = runs.size() == 1 && runs.front() == allMacroblockRows(height_);
    ++(whole ? counts_.encoded : counts_.spliced);
    return true;
}

bool JpegMovieWriter::appendPixelBuffer_withPresentationTime(CVPixelBufferRef buffer, CMTime time)
{
    if (!fits(buffer))
        return false;
    const MacroblockRows all = allMacroblockRows(height_);
    return append(std::move(buffer), {&all, 1}, time);
}

bool JpegMovieWriter::appendChangedRows_withPresentationTime(CVPixelBufferRef buffer,
                                                             const std::vector<RowRange>& changed, CMTime time)
{
    if (!lastStart_)
        return appendPixelBuffer_withPresentationTime(std::move(buffer), time);
    if (!fits(buffer))
        return false;
    findChangedRuns(changed, height_, changedRuns_);
    return changedRuns_.empty() ? appendPrevious_withPresentationTime(time)
                                : append(std::move(buffer), changedRuns_, time);
}

bool JpegMovieWriter::appendPrevious_withPresentationTime(CMTime time)
{
    const auto start = acceptedStart(time);
    if (!start || !lastStart_ || !frames_.repeat(*start))
        return false;
    accept(*start, time);
    ++counts_.repeated;
    return true;
}

MovieWriterStatistics JpegMovieWriter::statistics() const
{
    MovieWriterStatistics now = counts_;
    now.queued = static_cast<std::int64_t>(frames_.queued());
    now.bytes = bytesWritten();
    return now;
}

void JpegMovieWriter::finishWritingWithCompletionHandler(CMTime end, std::function<void(const Result&)> handler)
{
    if (state_ != State::Writing) {
        const Result result{MovieText::tr("There is no movie to finish."), 0};
        if (!fileThread_.joinable())
            fileThread_ = std::jthread([handler = std::move(handler), result] { handler(result); });
        return;
    }
    state_ = State::Finished;
    end_ = startOf(end);
    finished_ = std::move(handler);
    frames_.close(EncoderWorkers::Rest::Keep);
}

void JpegMovieWriter::writeFrames()
{
    EncoderWorkers::Frame frame;
    for (;;) {
        switch (frames_.take(frame, fragments_.deadline())) {
        case EncoderWorkers::Taken::Frame:
            writeFrame(frame);
            break;
        case EncoderWorkers::Taken::TimedOut:
            record(fragments_.writeAll());
            break;
        case EncoderWorkers::Taken::NoMore:
            if (finished_)
                finished_(finish());
            return;
        }
    }
}

void JpegMovieWriter::writeFrame(EncoderWorkers::Frame& frame)
{
    std::unique_ptr<JpegRows> picture;
    // Nothing may follow a missing frame, least of all a frame that shares rows with it.
    if (error().isEmpty() && !frame.strips.empty()) {
        picture = pictureOf(frame);
        if (!picture)
            fail(MovieText::tr("There is not enough memory to encode the movie."));
    }
    for (JpegStrip& strip : frame.strips)
        frames_.giveBack(std::move(strip.jpeg));
    if (error().isEmpty())
        record(fragments_.add(frame.start, std::move(picture), std::chrono::steady_clock::now()));
}

// Null when there is no memory.
std::unique_ptr<JpegRows> JpegMovieWriter::pictureOf(EncoderWorkers::Frame& frame)
{
    if (frame.failed)
        return nullptr;
    if (isWhole(frame.strips.front()))
        return std::move(frame.strips.front().jpeg);
    auto picture = frames_.spare();
    return joinRows(fragments_.newest(), frame.strips, *picture) ? std::move(picture) : nullptr;
}

void JpegMovieWriter::record(std::error_code error)
{
    if (error)
        fail(MovieText::cannotWrite(error));
}

void JpegMovieWriter::fail(const QString& error)
{
    const std::lock_guard lock(errorMutex_);
    if (error_.isEmpty())
        error_ = error;
}

MovieWriter::Result JpegMovieWriter::finish()
{
    if (error().isEmpty())
        record(fragments_.writeAll(end_));
    // A movie that lacks its last frames ends at their start.
    record(file_.finish(error().isEmpty() ? end_ : file_.end()));
    return {error(), static_cast<std::int64_t>(file_.sampleCount())};
}

} // namespace

std::unique_ptr<MovieWriter> createJpegMovieWriter(const QString& path, const MovieWriterSettings& settings)
{
    return std::make_unique<JpegMovieWriter>(path, settings);
}

} // namespace lumavex
