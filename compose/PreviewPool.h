// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>

#include <cstdint>
#include <vector>

namespace lumavex {

/// Pictures of one size that go round: one that nobody else holds any more is painted anew. QImage's own count of its
/// holders tells, so that handing one out takes no memory. One thread, on which they are also let go.
class PreviewPool {
public:
    struct Picture {
        QImage image;            ///< Format_RGB32
        std::uint64_t frame = 0; ///< what its user says it holds; 0 for nothing
    };

    /// An idle picture, the one with the youngest frame in it. Null when there is no memory. Until the next call.
    Picture* take(const QSize& size)
    {
        if (!pictures_.empty() && pictures_.front().image.size() != size)
            pictures_.clear();
        Picture* youngest = nullptr;
        for (Picture& picture : pictures_)
            if (picture.image.isDetached() && (!youngest || picture.frame > youngest->frame))
                youngest = &picture;
        if (youngest)
            return youngest;
        QImage image(size, QImage::Format_RGB32);
        if (image.isNull())
            return nullptr;
        return &pictures_.emplace_back(Picture{std::move(image), 0});
    }

private:
    std::vector<Picture> pictures_;
};

} // namespace lumavex
