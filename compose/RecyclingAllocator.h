// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <memory>
#include <mutex>
#include <new>
#include <utility>

namespace lumavex {

/// Reuses allocations of one size: that of the first request. Any thread.
class MemoryBin {
public:
    MemoryBin() = default;
    ~MemoryBin()
    {
        while (idle_)
            ::operator delete(std::exchange(idle_, idle_->next));
    }
    MemoryBin(const MemoryBin&) = delete;
    MemoryBin& operator=(const MemoryBin&) = delete;

    void* take(std::size_t bytes)
    {
        const std::lock_guard lock(mutex_);
        if (bytes_ == 0 && bytes >= sizeof(Idle))
            bytes_ = bytes;
        if (bytes == bytes_ && idle_)
            return std::exchange(idle_, idle_->next);
        return ::operator new(bytes);
    }

    void give(void* memory, std::size_t bytes) noexcept
    {
        const std::lock_guard lock(mutex_);
        if (bytes == bytes_)
            idle_ = new (memory) Idle{idle_};
        else
            ::operator delete(memory);
    }

private:
    struct Idle {
        Idle* next;
    };
    std::mutex mutex_;
    std::size_t bytes_ = 0;
    Idle* idle_ = nullptr;
};

/// For std::allocate_shared of objects that are made for every frame. The bin lives as long as any object made with it.
template <class T>
class RecyclingAllocator {
public:
    using value_type = T;
    static_assert(alignof(T) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__);

    explicit RecyclingAllocator(std::shared_ptr<MemoryBin> bin) : bin_(std::move(bin)) {}
    template <class U>
    RecyclingAllocator(const RecyclingAllocator<U>& other) : bin_(other.bin())
    {
    }

    T* allocate(std::size_t count) { return static_cast<T*>(bin_->take(count * sizeof(T))); }
    void deallocate(T* memory, std::size_t count) noexcept { bin_->give(memory, count * sizeof(T)); }

    const std::shared_ptr<MemoryBin>& bin() const { return bin_; }
    template <class U>
    bool operator==(const RecyclingAllocator<U>& other) const
    {
        return bin_ == other.bin();
    }

private:
    std::shared_ptr<MemoryBin> bin_;
};

} // namespace lumavex
