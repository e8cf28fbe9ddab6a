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

/// Memory shared with the server, so that reading pixels is one copy made by the server and none by us. It comes back
/// to the pool when its last user goes, on whatever thread that is, and also after the pool's end, and remembers which
/// picture it holds, so that the next reading can be of what changed since. Without MIT-SHM, or where server and
/// program share no memory, it is memory of our own and pixels come through the connection.
class SharedImagePool {
    struct Segment;
    struct Shelf;
    struct Loan;

public:
    explicit SharedImagePool(const XcbConnection& connection);
    ~SharedImagePool(); ///< before its connection
    SharedImagePool(const SharedImagePool&) = delete;
    SharedImagePool& operator=(const SharedImagePool&) = delete;

    /// A number for the next picture of a series; those of the series that share the pool differ.
    std::uint64_t newNumber() { return ++lastNumber_; }

    /// Memory for one picture with 32 bits per pixel, rows without gaps, that nobody else uses.
    class Memory {
    public:
        Memory() = default;
        Memory(std::unique_ptr<Loan> loan, const QSize& size); ///< the pool's
        explicit operator bool() const { return loan_ != nullptr; }
        const QSize& size() const { return size_; }
        const uchar* pixels() const;
        uchar* pixels();
        /// Which picture it holds; 0: none, or nobody knows.
        std::uint64_t number() const;
        void setNumber(std::uint64_t number);
        /// Hands it over to a Format_RGB32 picture.
        QImage toImage() &&;
        const Segment& segment() const; ///< for the pool

    private:
        struct LoanDeleter {
            void operator()(Loan* loan) const;
        };
        std::unique_ptr<Loan, LoanDeleter> loan_;
        QSize size_;
    };

    /// If possible with the youngest picture in it that `history` knows. None when there is no memory.
    Memory take(const QSize& size, const ChangeHistory& history);

    /// Parts of a drawable, relative to `corner` in it, and the memory that they go into.
    struct Reading {
        enum class Into {
            Place, ///< each where it lies in the picture; they are whole rows
            Turn,  ///< one behind the other, each without gaps between its rows
        };
        Memory& memory;
        xcb_drawable_t drawable;
        QPoint corner;
        const ChangedArea& parts;
        Into into;
    };
    /// Reads the parts, which must fit into their memories, in one round trip. False when the server refuses: a
    /// drawable is gone, or does not reach so far; the memories then hold no picture.
    bool read(const std::vector<Reading>& readings);

    /// Segments that exist now, in use or not.
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
