// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/x11/XcbConnection.h"

#include <QImage>
#include <QRect>

#include <memory>

namespace lumavex {

/// Reads pixels of the server's drawables into memory shared with it, so that a grab is one copy made by the server and
/// none by us. The memory comes back to the pool when the last copy of the picture goes, on whatever thread that is,
/// and also after the pool's end. Without MIT-SHM, or where server and program share no memory, pixels come through the
/// connection.
class SharedImagePool {
public:
    explicit SharedImagePool(const XcbConnection& connection);
    ~SharedImagePool(); ///< before its connection
    SharedImagePool(const SharedImagePool&) = delete;
    SharedImagePool& operator=(const SharedImagePool&) = delete;

    /// The pixels inside the rectangle of a drawable with 32 bits per pixel, as they are, in a Format_RGB32 picture.
    /// Null when the server refuses: the drawable is gone, or the rectangle reaches beyond it.
    QImage read(xcb_drawable_t drawable, const QRect& rect);

    /// Segments that exist now, in use or not.
    int segmentCount() const;

private:
    struct Segment;
    struct Shelf;
    struct Loan;

    std::unique_ptr<Segment> take(std::size_t bytes);
    std::unique_ptr<Segment> create(std::size_t bytes);
    std::unique_ptr<Segment> createFromDescriptor(std::size_t bytes);
    std::unique_ptr<Segment> createSystemV(std::size_t bytes);
    void detach(std::unique_ptr<Segment> segment);
    QImage readShared(std::unique_ptr<Segment> segment, xcb_drawable_t drawable, const QRect& rect);
    QImage readThroughConnection(xcb_drawable_t drawable, const QRect& rect);
    bool attached(xcb_void_cookie_t cookie) const;

    const XcbConnection& connection_;
    const std::shared_ptr<Shelf> shelf_;
    bool shared_;
};

} // namespace lumavex
