// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>

#include <cstdint>
#include <vector>

namespace lumavex {

/// Reusable pictures of one size: one without other owners is painted again. QImage's own reference count decides that,
/// so passing a picture on allocates nothing. One thread, which also releases the pictures.
class PreviewPool {
public:
    struct Picture {
        QImage image;            ///< Format_RGB32
        std::uint64_t frame = 0; ///< set by the user of the picture; 0 for nothing
    };

    /// The idle picture that holds the newest frame, or a new one. Null when there is no memory. Valid until the next
    /// call.
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
