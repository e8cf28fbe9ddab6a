// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/CMTime.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace lumavex {

/// Four bytes per pixel in the order alpha, red, green, blue.
inline constexpr std::uint32_t kCVPixelFormatType_32ARGB = 32;

/// The pixels of one frame, top row first. Releasing the last reference calls the release callback, on any thread.
class CVPixelBuffer {
public:
    using ReleaseCallback = void (*)(void* releaseRefCon, const void* baseAddress);

    CVPixelBuffer(int pixelsWide, int pixelsHigh, std::uint32_t format, const std::uint8_t* firstRow, int rowBytes,
                  ReleaseCallback release, void* releaseRefCon)
        : width(pixelsWide), height(pixelsHigh), pixelFormat(format), baseAddress(firstRow), bytesPerRow(rowBytes),
          release_(release), releaseRefCon_(releaseRefCon)
    {
    }
    ~CVPixelBuffer()
    {
        if (release_)
            release_(releaseRefCon_, baseAddress);
    }
    CVPixelBuffer(const CVPixelBuffer&) = delete;
    CVPixelBuffer& operator=(const CVPixelBuffer&) = delete;

    const int width;
    const int height;
    const std::uint32_t pixelFormat;
    const std::uint8_t* const baseAddress;
    const int bytesPerRow;

private:
    const ReleaseCallback release_;
    void* const releaseRefCon_;
};

using CVPixelBufferRef = std::shared_ptr<const CVPixelBuffer>;

struct MovieWriterSettings {
    double AVVideoWidthKey = 0; ///< pixels; the codec is Motion JPEG (AVVideoCodecJPEG)
    double AVVideoHeightKey = 0;
    /// Expected frames per second. Changes no picture and no time: the file counts in parts of such a frame.
    std::int32_t nominalRate = 30;
};

/// The video input of a writer. Main thread, except for the observer.
class MovieInput {
public:
    virtual ~MovieInput() = default;
    /// False while the bounded queue of frames to encode is full.
    virtual bool isReadyForMoreMediaData() const = 0;
    /// Sets the observer, which a thread of the writer calls each time isReadyForMoreMediaData has become true. Empty
    /// ends the observation; no call is in progress when that returns.
    virtual void observeReadiness(std::function<void()> readyForMoreMediaData) = 0;
};

/// Rows of a frame, counted from the top.
struct RowRange {
    int first = 0;
    int count = 0;
    friend bool operator==(const RowRange&, const RowRange&) = default;
};

/// Accepts the frames of a writer's input. Main thread.
class PixelBufferAdaptor {
public:
    virtual ~PixelBufferAdaptor() = default;
    /// Queues the frame; times must increase. False when the writer refuses it: failed, finished, not ready, other size
    /// or format.
    virtual bool appendPixelBuffer_withPresentationTime(CVPixelBufferRef buffer, CMTime time) = 0;
    /// The same when all rows outside of `changed` (ascending, not overlapping) have the pixels of the previous append,
    /// of whatever kind that was. The movie is byte-identical to one made without this knowledge; it costs less. No
    /// changed row makes a repetition; before the first append all rows count as changed.
    virtual bool appendChangedRows_withPresentationTime(CVPixelBufferRef buffer, const std::vector<RowRange>& changed,
                                                        CMTime time) = 0;
    /// Appends the pixels of the previous append again, without encoding them again. False as above, and before the
    /// first append.
    virtual bool appendPrevious_withPresentationTime(CMTime time) = 0;
};

/// Numbers of frames that a writer received since startWriting. The first three add up to the movie's frames.
struct MovieWriterStatistics {
    std::int64_t encoded = 0;  ///< frames encoded completely
    std::int64_t spliced = 0;  ///< frames with only the changed rows encoded
    std::int64_t repeated = 0; ///< frames that share the bytes of the previous one
    std::int64_t queued = 0;   ///< frames not yet in the file
    std::int64_t bytes = 0;    ///< size of the file
};

/// Writes one movie file with one Motion JPEG track, in MPEG-4 form (ISO/IEC 14496-12), so that it is playable after a
/// crash at any time except for about the last second. Worker threads encode the frames, in a bounded queue and in
/// order. The file starts with the first frame: the time of a frame in it is its presentation time minus that of the
/// first one.
class MovieWriter {
public:
    struct Result {
        QString error; ///< empty when the file is complete and on disk; else the reason as text for the user
        std::int64_t frames = 0;
    };

    virtual ~MovieWriter() = default; ///< leaves an unfinished file as a killed program would

    virtual MovieInput& input() = 0;
    virtual PixelBufferAdaptor& adaptor() = 0;

    /// Creates the file (an existing one is replaced, mode 0600). Empty, or the reason for a failure as text for the
    /// user.
    virtual QString startWriting() = 0;

    /// Empty while there is no error. Set when a write or an encoder has failed (a full disk, for example): from then
    /// on frames are refused, but the content of the file stays playable and finishWriting completes it. Any thread.
    virtual QString error() const = 0;
    /// Bytes in the file so far. Any thread.
    virtual std::int64_t bytesWritten() const = 0;
    /// Main thread.
    virtual MovieWriterStatistics statistics() const = 0;

    /// Encodes and writes the queued frames, converts the file to an ordinary one in place and flushes it to disk.
    /// `end` is the presentation time at which the last frame ends. Returns at once; a thread of the writer calls the
    /// handler once.
    virtual void finishWritingWithCompletionHandler(CMTime end, std::function<void(const Result&)> handler) = 0;
};

using MovieWriterFactory =
    std::function<std::unique_ptr<MovieWriter>(const QString& path, const MovieWriterSettings& settings)>;

/// Converts the file of a killed program to an ordinary one, in place. Empty, or the reason for a failure. Any thread.
using MovieRepair = std::function<QString(const QString& path)>;

/// Content of a finished movie, according to its own tables.
struct MovieFacts {
    struct Track {
        std::int64_t samples = 0;
        double seconds = 0;
    };
    QString error; ///< not empty: why it cannot be read, or that media data are missing; text for the user
    std::optional<Track> picture;
    std::optional<Track> sound;
};

/// Reads the tables of a finished movie by any program, and checks that the pictures in them exist, without decoding
/// them. Takes as long as the disk needs. Any thread.
using MovieReader = std::function<MovieFacts(const QString& path)>;

} // namespace lumavex
