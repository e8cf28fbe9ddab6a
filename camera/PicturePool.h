// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>

#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace lumavex {

/// Pictures of one size whose memory is used again once the last copy of a picture is gone, which may be on any thread
/// and after the pool itself has gone. A new size lets the old memory go.
class PicturePool {
public:
    PicturePool();
    ~PicturePool();
    PicturePool(const PicturePool&) = delete;
    PicturePool& operator=(const PicturePool&) = delete;

    /// A picture of Format_RGB32 with whatever is in it, its rows close together; to be written only through
    /// `pixels` and before it is handed on. Null when there is no memory. Any thread.
    QImage take(const QSize& size);
    static std::uint32_t* pixels(QImage& picture);

private:
    struct Store;
    struct Loan;
    static void giveBack(void* loan);

    std::shared_ptr<Store> store_;
};

} // namespace lumavex
