// SPDX-License-Identifier: GPL-3.0-or-later
#include "camera/PicturePool.h"

#include <new>
#include <utility>

namespace lumavex {
namespace {

/// More than are in use at the same time (being made, published, shown, held by a recorder).
constexpr std::size_t kMostIdle = 4;

struct FreeAligned {
    void operator()(std::uint32_t* memory) const { ::operator delete (memory, std::align_val_t{64}); }
};
using Memory = std::unique_ptr<std::uint32_t, FreeAligned>;

Memory allocate(const QSize& size)
{
    const auto bytes = std::size_t(size.width()) * std::size_t(size.height()) * sizeof(std::uint32_t);
    return Memory(static_cast<std::uint32_t*>(::operator new (bytes, std::align_val_t{64}, std::nothrow)));
}

} // namespace

struct PicturePool::Store {
    std::mutex mutex;
    QSize size;
    std::vector<Memory> idle;
};

struct PicturePool::Loan {
    std::shared_ptr<Store> store;
    QSize size;
    Memory memory;
};

PicturePool::PicturePool() : store_(std::make_shared<Store>()) {}

PicturePool::~PicturePool() = default;

QImage PicturePool::take(const QSize& size)
{
    if (size.isEmpty())
        return {};
    auto loan = std::make_unique<Loan>();
    loan->store = store_;
    loan->size = size;
    {
        const std::lock_guard lock(store_->mutex);
        if (store_->size != size)
            store_->idle.clear();
        store_->size = size;
        if (!store_->idle.empty()) {
            loan->memory = std::move(store_->idle.back());
            store_->idle.pop_back();
        }
    }
    if (!loan->memory)
        loan->memory = allocate(size);
    if (!loan->memory)
        return {};
    auto* bytes = reinterpret_cast<uchar*>(loan->memory.get());
    return {bytes, size.width(), size.height(), size.width() * 4, QImage::Format_RGB32, giveBack, loan.release()};
}

std::uint32_t* PicturePool::pixels(QImage& picture)
{
    return reinterpret_cast<std::uint32_t*>(picture.bits());
}

void PicturePool::giveBack(void* loan)
{
    const std::unique_ptr<Loan> back(static_cast<Loan*>(loan));
    const std::lock_guard lock(back->store->mutex);
    if (back->size == back->store->size && back->store->idle.size() < kMostIdle)
        back->store->idle.push_back(std::move(back->memory));
}

} // namespace lumavex
