// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/x11/SharedImagePool.h"

#include <xcb/shm.h>

#include <sys/ipc.h>
#include <sys/mman.h>
#include <sys/shm.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <vector>

namespace lumavex {

namespace {

/// Free segments kept for the next grabs: the latest picture, the one being encoded and one in between are usually out.
constexpr std::size_t kFreeSegmentsKept = 2;
constexpr int kBytesPerPixel = 4;

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

    const xcb_shm_seg_t id;
    void* const memory;
    const std::size_t bytes;

private:
    std::atomic<int>& counter_;
    const Unmap unmap_;
};

/// Where segments wait for their next use. Shared by the pool and all its pictures. Any thread.
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

/// A segment lent to a picture.
struct SharedImagePool::Loan {
    std::shared_ptr<Shelf> shelf;
    std::unique_ptr<Segment> segment;

    static void giveBack(void* loan)
    {
        const std::unique_ptr<Loan> ended(static_cast<Loan*>(loan));
        ended->shelf->put(std::move(ended->segment));
    }
};

SharedImagePool::SharedImagePool(const XcbConnection& connection)
    : connection_(connection), shelf_(std::make_shared<Shelf>()), shared_(connection.extensions().shm)
{
}

SharedImagePool::~SharedImagePool()
{
    // What is still lent is detached by the server when the connection closes.
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

QImage SharedImagePool::read(xcb_drawable_t drawable, const QRect& rect)
{
    if (rect.isEmpty())
        return {};
    if (shared_) {
        const std::size_t bytes = std::size_t{kBytesPerPixel} * static_cast<std::size_t>(rect.width())
                                  * static_cast<std::size_t>(rect.height());
        if (auto segment = take(bytes))
            return readShared(std::move(segment), drawable, rect);
        shared_ = false;
    }
    return readThroughConnection(drawable, rect);
}

std::unique_ptr<SharedImagePool::Segment> SharedImagePool::take(std::size_t bytes)
{
    // Main display and window composites take turns, so segments of another size are kept too, but not many.
    auto waiting = shelf_->takeAll();
    std::unique_ptr<Segment> found;
    std::size_t kept = 0;
    for (auto& segment : waiting) {
        if (!found && segment->bytes == bytes)
            found = std::move(segment);
        else if (kept++ < kFreeSegmentsKept)
            shelf_->put(std::move(segment));
        else
            detach(std::move(segment));
    }
    return found ? std::move(found) : create(bytes);
}

std::unique_ptr<SharedImagePool::Segment> SharedImagePool::create(std::size_t bytes)
{
    if (connection_.extensions().shmDescriptors) {
        if (auto segment = createFromDescriptor(bytes))
            return segment;
    }
    return createSystemV(bytes);
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
    // The descriptor is libxcb's from here: it closes it once it is sent.
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
    // Both sides are attached by now or never will be: the system frees it with the last of them, even after a crash.
    shmctl(key, IPC_RMID, nullptr);
    return segment;
}

void SharedImagePool::detach(std::unique_ptr<Segment> segment)
{
    xcb_shm_detach(connection_.get(), segment->id);
}

QImage SharedImagePool::readShared(std::unique_ptr<Segment> segment, xcb_drawable_t drawable, const QRect& rect)
{
    xcb_connection_t* const c = connection_.get();
    const auto cookie =
        xcb_shm_get_image(c, drawable, static_cast<std::int16_t>(rect.x()), static_cast<std::int16_t>(rect.y()),
                          static_cast<std::uint16_t>(rect.width()), static_cast<std::uint16_t>(rect.height()), ~0U,
                          XCB_IMAGE_FORMAT_Z_PIXMAP, segment->id, 0);
    const XcbOwned<xcb_shm_get_image_reply_t> reply(xcb_shm_get_image_reply(c, cookie, nullptr));
    if (!reply || reply->size < segment->bytes) {
        shelf_->put(std::move(segment));
        return {};
    }
    auto* const pixels = static_cast<const uchar*>(segment->memory);
    auto loan = std::make_unique<Loan>(Loan{shelf_, std::move(segment)});
    return QImage(pixels, rect.width(), rect.height(), kBytesPerPixel * rect.width(), QImage::Format_RGB32,
                  &Loan::giveBack, loan.release());
}

QImage SharedImagePool::readThroughConnection(xcb_drawable_t drawable, const QRect& rect)
{
    xcb_connection_t* const c = connection_.get();
    const auto cookie = xcb_get_image(c, XCB_IMAGE_FORMAT_Z_PIXMAP, drawable, static_cast<std::int16_t>(rect.x()),
                                      static_cast<std::int16_t>(rect.y()), static_cast<std::uint16_t>(rect.width()),
                                      static_cast<std::uint16_t>(rect.height()), ~0U);
    XcbOwned<xcb_get_image_reply_t> reply(xcb_get_image_reply(c, cookie, nullptr));
    if (!reply || xcb_get_image_data_length(reply.get()) < kBytesPerPixel * rect.width() * rect.height())
        return {};
    const uchar* const pixels = xcb_get_image_data(reply.get());
    return QImage(pixels, rect.width(), rect.height(), kBytesPerPixel * rect.width(), QImage::Format_RGB32, &std::free,
                  reply.release());
}

} // namespace lumavex
