// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/x11/SharedImagePool.h"

#include <xcb/shm.h>

#include <sys/ipc.h>
#include <sys/mman.h>
#include <sys/shm.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstring>
#include <mutex>
#include <vector>

namespace lumavex {

namespace {

/// Free segments kept for the next grabs: the latest picture, the one being encoded and one in between are usually in
/// use.
constexpr std::size_t kFreeSegmentsKept = 2;
constexpr int kBytesPerPixel = 4;

std::size_t bytesOf(const QRect& part)
{
    return std::size_t{kBytesPerPixel} * static_cast<std::size_t>(part.width())
           * static_cast<std::size_t>(part.height());
}

/// Offset of whole rows in their picture.
std::size_t placeOf(const QRect& rows)
{
    return std::size_t{kBytesPerPixel} * static_cast<std::size_t>(rows.width()) * static_cast<std::size_t>(rows.top());
}

/// Calls the function with each part and its offset in memory.
template <typename Function>
void forEachPart(const SharedImagePool::Reading& reading, const Function& function)
{
    std::size_t turn = 0;
    for (const QRect& part : reading.parts) {
        function(part, reading.into == SharedImagePool::Reading::Into::Turn ? turn : placeOf(part));
        turn += bytesOf(part);
    }
}

} // namespace

struct SharedImagePool::Segment {
    using Unmap = int (*)(void*, std::size_t);

    Segment(std::atomic<int>& counter, xcb_shm_seg_t segmentId, void* mapped, std::size_t length, Unmap unmap)
        : id(segmentId), memory(mapped), bytes(length), counter_(counter), unmap_(unmap)
    {
        ++counter_;
    }
    ~Segment()
    {
        unmap_(memory, bytes);
        --counter_;
    }
    Segment(const Segment&) = delete;
    Segment& operator=(const Segment&) = delete;

    uchar* pixels() const { return static_cast<uchar*>(memory); }

    const xcb_shm_seg_t id; ///< 0: private memory, not shared with the server
    void* const memory;
    const std::size_t bytes;
    std::uint64_t number = 0; ///< number of the picture in it

private:
    std::atomic<int>& counter_;
    const Unmap unmap_;
};

/// Pending requests in the order of the parts; all of one kind or the other.
struct SharedImagePool::Pending {
    std::array<xcb_shm_get_image_cookie_t, ChangedArea::capacity> shared;
    std::array<xcb_get_image_cookie_t, ChangedArea::capacity> copied;
};

/// Storage of free segments, shared by the pool and all its pictures. Any thread.
struct SharedImagePool::Shelf {
    std::atomic<int> segments = 0; ///< must outlive `free`
    std::mutex mutex;
    bool open = true;                           ///< guarded by mutex; false once the pool is gone
    std::vector<std::unique_ptr<Segment>> free; ///< guarded by mutex

    void put(std::unique_ptr<Segment> segment)
    {
        const std::lock_guard lock(mutex);
        if (open)
            free.push_back(std::move(segment));
    }
    std::vector<std::unique_ptr<Segment>> takeAll()
    {
        const std::lock_guard lock(mutex);
        return std::exchange(free, {});
    }
};

/// A segment in use.
struct SharedImagePool::Loan {
    std::shared_ptr<Shelf> shelf;
    std::unique_ptr<Segment> segment;

    Loan(std::shared_ptr<Shelf> home, std::unique_ptr<Segment> lent) : shelf(std::move(home)), segment(std::move(lent))
    {
    }
    Loan(const Loan&) = delete;
    Loan& operator=(const Loan&) = delete;
    ~Loan() { shelf->put(std::move(segment)); }
};

SharedImagePool::Memory::Memory(std::unique_ptr<Loan> loan, const QSize& size) : loan_(loan.release()), size_(size) {}

void SharedImagePool::Memory::LoanDeleter::operator()(Loan* loan) const
{
    delete loan;
}

const SharedImagePool::Segment& SharedImagePool::Memory::segment() const
{
    return *loan_->segment;
}

const uchar* SharedImagePool::Memory::pixels() const
{
    return loan_->segment->pixels();
}

uchar* SharedImagePool::Memory::pixels()
{
    return loan_->segment->pixels();
}

std::uint64_t SharedImagePool::Memory::number() const
{
    return loan_->segment->number;
}

void SharedImagePool::Memory::setNumber(std::uint64_t number)
{
    loan_->segment->number = number;
}

QImage SharedImagePool::Memory::toImage() &&
{
    const uchar* const first = pixels();
    const auto giveBack = [](void* loan) { delete static_cast<Loan*>(loan); };
    return {first,    size_.width(),  size_.height(), kBytesPerPixel * size_.width(), QImage::Format_RGB32,
            giveBack, loan_.release()};
}

SharedImagePool::SharedImagePool(const XcbConnection& connection)
    : connection_(connection), shelf_(std::make_shared<Shelf>()), shared_(connection.extensions().shm)
{
}

SharedImagePool::~SharedImagePool()
{
    // The server detaches segments still in use when the connection closes.
    std::vector<std::unique_ptr<Segment>> rest;
    {
        const std::lock_guard lock(shelf_->mutex);
        shelf_->open = false;
        rest = std::exchange(shelf_->free, {});
    }
    for (auto& segment : rest)
        detach(std::move(segment));
}

int SharedImagePool::segmentCount() const
{
    return shelf_->segments;
}

SharedImagePool::Memory SharedImagePool::take(const QSize& size, const ChangeHistory& history)
{
    if (size.isEmpty())
        return {};
    const std::size_t bytes =
        std::size_t{kBytesPerPixel} * static_cast<std::size_t>(size.width()) * static_cast<std::size_t>(size.height());
    auto waiting = shelf_->takeAll();
    const auto age = [&](const Segment& segment) { return history.knows(segment.number) ? segment.number + 1 : 1; };
    std::unique_ptr<Segment>* best = nullptr;
    for (auto& segment : waiting) {
        if (segment->bytes == bytes && (!best || age(*segment) > age(**best)))
            best = &segment;
    }
    std::unique_ptr<Segment> found = best ? std::move(*best) : nullptr;
    // Main display and window composites alternate, so a few segments of other sizes are kept, too.
    std::size_t kept = 0;
    for (auto& segment : waiting) {
        if (segment && kept++ < kFreeSegmentsKept)
            shelf_->put(std::move(segment));
        else if (segment)
            detach(std::move(segment));
    }
    if (!found)
        found = create(bytes);
    return found ? Memory(std::make_unique<Loan>(shelf_, std::move(found)), size) : Memory();
}

bool SharedImagePool::read(const std::vector<Reading>& readings)
{
    std::vector<Pending> pending(readings.size());
    for (std::size_t i = 0; i < readings.size(); ++i)
        send(readings[i], pending[i]);
    bool complete = true;
    for (std::size_t i = 0; i < readings.size(); ++i)
        complete = receive(readings[i], pending[i]) && complete;
    for (const Reading& reading : readings)
        if (!complete)
            reading.memory.setNumber(0);
    return complete;
}

std::unique_ptr<SharedImagePool::Segment> SharedImagePool::create(std::size_t bytes)
{
    std::unique_ptr<Segment> segment;
    if (shared_ && connection_.extensions().shmDescriptors)
        segment = createFromDescriptor(bytes);
    if (shared_ && !segment)
        segment = createSystemV(bytes);
    shared_ = segment != nullptr;
    return segment ? std::move(segment) : createOwn(bytes);
}

std::unique_ptr<SharedImagePool::Segment> SharedImagePool::createOwn(std::size_t bytes)
{
    void* const memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        return nullptr;
    return std::make_unique<Segment>(shelf_->segments, xcb_shm_seg_t{XCB_NONE}, memory, bytes, munmap);
}

bool SharedImagePool::attached(xcb_void_cookie_t cookie) const
{
    const XcbOwned<xcb_generic_error_t> error(xcb_request_check(connection_.get(), cookie));
    return !error && connection_.alive();
}

std::unique_ptr<SharedImagePool::Segment> SharedImagePool::createFromDescriptor(std::size_t bytes)
{
    const int descriptor = memfd_create("lumavex-grab", MFD_CLOEXEC);
    if (descriptor < 0)
        return nullptr;
    if (ftruncate(descriptor, static_cast<off_t>(bytes)) != 0) {
        close(descriptor);
        return nullptr;
    }
    void* const memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    if (memory == MAP_FAILED) {
        close(descriptor);
        return nullptr;
    }
    const xcb_shm_seg_t id = connection_.newId();
    auto segment = std::make_unique<Segment>(shelf_->segments, id, memory, bytes, munmap);
    // libxcb owns the descriptor from here and closes it after sending it.
    if (!attached(xcb_shm_attach_fd_checked(connection_.get(), id, descriptor, 0)))
        return nullptr;
    return segment;
}

std::unique_ptr<SharedImagePool::Segment> SharedImagePool::createSystemV(std::size_t bytes)
{
    const int key = shmget(IPC_PRIVATE, bytes, IPC_CREAT | 0600);
    if (key < 0)
        return nullptr;
    void* const memory = shmat(key, nullptr, 0);
    std::unique_ptr<Segment> segment;
    if (memory != reinterpret_cast<void*>(-1)) {
        const xcb_shm_seg_t id = connection_.newId();
        segment = std::make_unique<Segment>(shelf_->segments, id, memory, bytes,
                                            [](void* mapped, std::size_t) { return shmdt(mapped); });
        if (!attached(xcb_shm_attach_checked(connection_.get(), id, static_cast<std::uint32_t>(key), 0)))
            segment.reset();
    }
    // By now both sides are attached or never will be: the system frees the segment with the last of them, even after a
    // crash.
    shmctl(key, IPC_RMID, nullptr);
    return segment;
}

void SharedImagePool::detach(std::unique_ptr<Segment> segment)
{
    if (segment->id)
        xcb_shm_detach(connection_.get(), segment->id);
}

void SharedImagePool::send(const Reading& reading, Pending& pending) const
{
    xcb_connection_t* const c = connection_.get();
    const xcb_shm_seg_t segment = reading.memory.segment().id;
    const ServerGrab alone(segment ? nullptr : c); // nobody draws between the copying and the reading
    if (!segment)
        connection_.copyRedirectedWindows();
    std::size_t sent = 0;
    forEachPart(reading, [&](const QRect& part, std::size_t place) {
        const auto x = static_cast<std::int16_t>(reading.corner.x() + part.x());
        const auto y = static_cast<std::int16_t>(reading.corner.y() + part.y());
        const auto width = static_cast<std::uint16_t>(part.width());
        const auto height = static_cast<std::uint16_t>(part.height());
        if (segment)
            pending.shared[sent] =
                xcb_shm_get_image(c, reading.drawable, x, y, width, height, ~0U, XCB_IMAGE_FORMAT_Z_PIXMAP, segment,
                                  static_cast<std::uint32_t>(place));
        else
            pending.copied[sent] =
                xcb_get_image(c, XCB_IMAGE_FORMAT_Z_PIXMAP, reading.drawable, x, y, width, height, ~0U);
        ++sent;
    });
}

bool SharedImagePool::receive(const Reading& reading, const Pending& pending) const
{
    xcb_connection_t* const c = connection_.get();
    const bool shared = reading.memory.segment().id != 0;
    uchar* const pixels = reading.memory.pixels();
    bool complete = true;
    std::size_t answered = 0;
    forEachPart(reading, [&](const QRect& part, std::size_t place) {
        const std::size_t i = answered++;
        if (shared) {
            const XcbOwned<xcb_shm_get_image_reply_t> reply(xcb_shm_get_image_reply(c, pending.shared[i], nullptr));
            complete = complete && reply && reply->size >= bytesOf(part);
            return;
        }
        const XcbOwned<xcb_get_image_reply_t> reply(xcb_get_image_reply(c, pending.copied[i], nullptr));
        complete =
            complete && reply && static_cast<std::size_t>(xcb_get_image_data_length(reply.get())) >= bytesOf(part);
        if (complete)
            std::memcpy(pixels + place, xcb_get_image_data(reply.get()), bytesOf(part));
    });
    return complete;
}

} // namespace lumavex
