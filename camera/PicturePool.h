// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>

#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace lumavex {

/// Pictures of one size whose memory is reused once the last copy of a picture is gone, which may be on any thread and
/// after the end of the pool. A new size frees the old memory.
class PicturePool {
public:
    PicturePool();
    ~PicturePool();
    PicturePool(const PicturePool&) = delete;
    PicturePool& operator=(const PicturePool&) = delete;

    /// A picture of Format_RGB32 with undefined content and contiguous rows. Write to it only through `pixels` and
    /// before passing it on. Null when there is no memory. Any thread.
    QImage take(const QSize& size);
    static std::uint32_t* pixels(QImage& picture);

private:
    struct Store;
    struct Loan;
    static void giveBack(void* loan);

    std::shared_ptr<Store> store_;
};

} // namespace lumavex
