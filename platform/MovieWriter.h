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

/// The pixels of one frame, first row on top. The last reference calls the release callback, on whatever thread that
/// is.
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
    /// Frames a second to be expected. It changes no picture and no time: the file counts in parts of such a frame.
    std::int32_t nominalRate = 30;
};

/// The video input of a writer. Main thread, but for the observer.
class MovieInput {
public:
    virtual ~MovieInput() = default;
    /// False while the bounded queue of frames to encode is full.
    virtual bool isReadyForMoreMediaData() const = 0;
    /// Called, on a thread of the writer's, each time isReadyForMoreMediaData has become true. Empty to end observing;
    /// no call is in flight when that returns.
    virtual void observeReadiness(std::function<void()> readyForMoreMediaData) = 0;
};

/// Rows of a frame, counted from the top.
struct RowRange {
    int first = 0;
    int count = 0;
    friend bool operator==(const RowRange&, const RowRange&) = default;
};

/// Takes the frames of a writer's input. Main thread.
class PixelBufferAdaptor {
public:
    virtual ~PixelBufferAdaptor() = default;
    /// Queues the frame; times must grow. False when the writer refuses it: failed, finished, not ready, other size or
    /// format.
    virtual bool appendPixelBuffer_withPresentationTime(CVPixelBufferRef buffer, CMTime time) = 0;
    /// The same, told that all rows outside of `changed` (growing, not overlapping) hold the pixels appended before, by
    /// whatever append that was. The movie is to the byte what it would be without being told; it costs less. When no
    /// row changed it is a repetition; when nothing has been appended yet, all rows count as changed.
    virtual bool appendChangedRows_withPresentationTime(CVPixelBufferRef buffer, const std::vector<RowRange>& changed,
                                                        CMTime time) = 0;
    /// The same as appending the pixels of the previous append again, without encoding them again. False like above,
    /// and when nothing has been appended yet.
    virtual bool appendPrevious_withPresentationTime(CMTime time) = 0;
};

/// What a writer was given since startWriting, as plain numbers. The first three add up to the movie's frames.
struct MovieWriterStatistics {
    std::int64_t encoded = 0;  ///< frames encoded whole
    std::int64_t spliced = 0;  ///< frames of which only the changed rows were encoded
    std::int64_t repeated = 0; ///< frames that share the bytes of the one before
    std::int64_t queued = 0;   ///< frames on their way to the file now
    std::int64_t bytes = 0;    ///< in the file
};

/// Writes one movie file with one Motion JPEG track, in MPEG-4 form (ISO/IEC 14496-12), so that it can be played
/// after a crash at any time but for about the last second. Frames are encoded by worker threads, bounded and in order.
/// The file starts with the first frame: each frame stands at its presentation time less that of the first one.
class MovieWriter {
public:
    struct Result {
        QString error; ///< empty when the file is complete and on disk; else why not, in the user's words
        std::int64_t frames = 0;
    };

    virtual ~MovieWriter() = default; ///< an unfinished file is left as a killed program would leave it

    virtual MovieInput& input() = 0;
    virtual PixelBufferAdaptor& adaptor() = 0;

    /// Creates the file (an existing one is replaced, mode 0600). Empty, or why not, in the user's words.
    virtual QString startWriting() = 0;

    /// Empty while all is well. Set when a write or an encoder failed (a full disk, say): from then on frames are
    /// refused, but what is in the file stays playable and finishWriting completes it. Any thread.
    virtual QString error() const = 0;
    /// Bytes in the file so far. Any thread.
    virtual std::int64_t bytesWritten() const = 0;
    /// Main thread.
    virtual MovieWriterStatistics statistics() const = 0;

    /// Encodes and writes what is queued, turns the file into an ordinary one in place and flushes it to disk.
    /// `end` is the presentation time at which the last frame ends. Returns at once; the handler is called once, on a
    /// thread of the writer's.
    virtual void finishWritingWithCompletionHandler(CMTime end, std::function<void(const Result&)> handler) = 0;
};

using MovieWriterFactory =
    std::function<std::unique_ptr<MovieWriter>(const QString& path, const MovieWriterSettings& settings)>;

/// Makes an ordinary file, in place, out of one that a killed program left. Empty, or why not. Any thread.
using MovieRepair = std::function<QString(const QString& path)>;

/// What lies in a finished movie, by its own tables.
struct MovieFacts {
    struct Track {
        std::int64_t samples = 0;
        double seconds = 0;
    };
    QString error; ///< not empty: why it cannot be read, or that media data are missing; in the user's words
    std::optional<Track> picture;
    std::optional<Track> sound;
};

/// Reads a finished movie's tables, whoever wrote it, and looks whether the pictures they name are there, without
/// decoding them. Takes as long as the disk needs. Any thread.
using MovieReader = std::function<MovieFacts(const QString& path)>;

} // namespace lumavex
