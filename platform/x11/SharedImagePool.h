// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/ChangedArea.h"
#include "platform/x11/XcbConnection.h"

#include <QImage>
#include <QRect>
#include <QSize>

#include <memory>
#include <vector>

namespace lumavex {

/// Memory shared with the server, so that reading pixels takes one copy by the server and none by this program. It
/// returns to the pool when its last user releases it, on any thread and also after the pool's end, and remembers the
/// picture it holds, so that the next reading can be limited to the changes since. Without MIT-SHM, or when server and
/// program share no memory, it is private memory and pixels arrive through the connection.
class SharedImagePool {
    struct Segment;
    struct Shelf;
    struct Loan;

public:
    explicit SharedImagePool(const XcbConnection& connection);
    ~SharedImagePool(); ///< before its connection is closed
    SharedImagePool(const SharedImagePool&) = delete;
    SharedImagePool& operator=(const SharedImagePool&) = delete;

    /// A number for the next picture of a series; unique among the series that share the pool.
    std::uint64_t newNumber() { return ++lastNumber_; }

    /// Memory for one picture with 32 bits per pixel, contiguous rows and no other user.
    class Memory {
    public:
        Memory() = default;
        Memory(std::unique_ptr<Loan> loan, const QSize& size); ///< for the pool only
        explicit operator bool() const { return loan_ != nullptr; }
        const QSize& size() const { return size_; }
        const uchar* pixels() const;
        uchar* pixels();
        /// Number of the picture that it holds; 0: none or unknown.
        std::uint64_t number() const;
        void setNumber(std::uint64_t number);
        /// Moves the memory into a Format_RGB32 picture.
        QImage toImage() &&;
        const Segment& segment() const; ///< for the pool only

    private:
        struct LoanDeleter {
            void operator()(Loan* loan) const;
        };
        std::unique_ptr<Loan, LoanDeleter> loan_;
        QSize size_;
    };

    /// Prefers memory that holds the latest picture known to `history`. None when no memory is available.
    Memory take(const QSize& size, const ChangeHistory& history);

    /// Parts of a drawable, relative to `corner` in it, and their target memory.
    struct Reading {
        enum class Into {
            Place, ///< each part at its place in the picture; parts are whole rows
            Turn,  ///< parts one after the other, each with contiguous rows
        };
        Memory& memory;
        xcb_drawable_t drawable;
        QPoint corner;
        const ChangedArea& parts;
        Into into;
    };
    /// Reads the parts, which must fit into their memories, in one round trip. False when the server refuses because a
    /// drawable is gone or too small; the memories then hold no picture.
    bool read(const std::vector<Reading>& readings);

    /// Number of existing segments, in use or free.
    int segmentCount() const;

private:
    std::unique_ptr<Segment> create(std::size_t bytes);
    std::unique_ptr<Segment> createFromDescriptor(std::size_t bytes);
    std::unique_ptr<Segment> createSystemV(std::size_t bytes);
    std::unique_ptr<Segment> createOwn(std::size_t bytes);
    void detach(std::unique_ptr<Segment> segment);
    struct Pending;
    void send(const Reading& reading, Pending& pending) const;
    bool receive(const Reading& reading, const Pending& pending) const;
    bool attached(xcb_void_cookie_t cookie) const;

    const XcbConnection& connection_;
    const std::shared_ptr<Shelf> shelf_;
    bool shared_;
    std::uint64_t lastNumber_ = 0;
};

} // namespace lumavex
